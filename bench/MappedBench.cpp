// Pictures in scratch files, beside plain reading and writing of the same files.
//
// The files lie in the folder that TQX_BENCH_FOLDER names, or in the one for temporary files.
// With TQX_BENCH_HUGE set, pictures of 40000 × 40000 pixels (4.8 GB each) are worked on as well.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "bench/BenchPictures.h"
#include "host/framework/FolderItem.h"

namespace {

using bench::Object;
using bench::Ref;
using bench::Value;

constexpr std::size_t kChunk = 1 << 20;  // of the plain reading and writing, in bytes

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

std::string Path(const char* name) {
    const char* const folder = std::getenv("TQX_BENCH_FOLDER");
    const std::filesystem::path base = folder ? std::filesystem::path(folder) : std::filesystem::temp_directory_path();
    return (base / ("tqx-bench-" + std::to_string(getpid()) + name)).string();
}

// A square RGB picture in a scratch file.
struct MappedPicture {
    std::string path;
    Ref<Object> picture;

    MappedPicture(const char* name, int side) : path(Path(name)), picture(bench::NewPicture(1, 1, bench::kRGB)) {
        bench::Call(picture, "Constructor", side, side, bench::kRGB, 0, host::NewFolderItem(path));
        if (!std::filesystem::exists(path)) Fail("a scratch file can't be made");
    }

    double Bytes() const { return static_cast<double>(std::filesystem::file_size(path)); }
};

// Seconds to read the whole of a file into a small buffer.
double ReadPlainly(const std::string& path) {
    std::vector<char> chunk(kChunk);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const double start = Now();
    while (read(file, chunk.data(), chunk.size()) > 0) {
    }
    const double seconds = Now() - start;
    close(file);
    return seconds;
}

// Seconds to write over the whole of a file from a small buffer.
double WritePlainly(const std::string& path) {
    const std::vector<char> chunk(kChunk, 'x');
    auto left = static_cast<std::int64_t>(std::filesystem::file_size(path));
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    const double start = Now();
    for (ssize_t written = 1; left > 0 && written > 0; left -= written)
        written = write(file, chunk.data(), std::min<std::size_t>(kChunk, static_cast<std::size_t>(left)));
    const double seconds = Now() - start;
    close(file);
    return seconds;
}

// The most memory that was resident since ForgetPeak, in MB.
double PeakMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::strtod(line.c_str() + 6, nullptr) / 1024;
    return 0;
}

void ForgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

// Times the call against plain reading and writing of as many bytes, by turns. Reports
//   MB/s, plain_MB/s  bytes of the files that were read and written a second
//   plain%            the first of the second
//   peak_MB           the most memory that was resident in the call
void Measure(benchmark::State& state, const MappedPicture* reads, const MappedPicture* writes,
             const std::function<void()>& call) {
    const double megabytes = ((reads ? reads->Bytes() : 0) + (writes ? writes->Bytes() : 0)) / 1e6;
    double plain = 0, taken = 0;
    call();  // the files' pages are in memory then, as far as they fit
    for (auto _ : state) {
        plain += (reads ? ReadPlainly(reads->path) : 0) + (writes ? WritePlainly(writes->path) : 0);
        ForgetPeak();
        const double start = Now();
        call();
        const double seconds = Now() - start;
        taken += seconds;
        state.SetIterationTime(seconds);
        state.counters["peak_MB"] = std::max<double>(state.counters["peak_MB"], PeakMegabytes());
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["MB/s"] = megabytes * runs / taken;
    state.counters["plain_MB/s"] = megabytes * runs / plain;
    state.counters["plain%"] = 100 * plain / taken;
}

void BM_MappedFill(benchmark::State& state) {
    const MappedPicture picture("a", static_cast<int>(state.range(0)));
    Measure(state, nullptr, &picture, [&] { bench::Call(picture.picture, "FillRectRGB", 10, 20, 30); });
}

// Between two mapped pictures.
template <class Operation>
void Convert(benchmark::State& state, const Operation& operation) {
    const MappedPicture from("a", static_cast<int>(state.range(0))), to("b", static_cast<int>(state.range(0)));
    Measure(state, &from, &to, [&] { operation(from.picture, to.picture); });
}

void BM_MappedGamma(benchmark::State& state) {
    Convert(state, [](const auto& from, const auto& to) { bench::Call(from, "GammaFilter", to, 2.2); });
}

void BM_MappedGammaMirrored(benchmark::State& state) {
    Convert(state, [](const auto& from, const auto& to) {
        const Value view = bench::Call(from, "MirroredView");
        bench::Call(Ref<Object>::Share(view.object()), "GammaFilter", to, 2.2);
    });
}

void BM_MappedVMirror(benchmark::State& state) {
    const MappedPicture picture("a", static_cast<int>(state.range(0)));
    Measure(state, &picture, &picture, [&] { bench::Call(picture.picture, "VMirror"); });
}

void BM_MappedRotate90(benchmark::State& state) {
    Convert(state, [](const auto& from, const auto& to) { bench::Call(from, "Rotate90", to); });
}

void BM_MappedShrink(benchmark::State& state) {
    const MappedPicture from("a", static_cast<int>(state.range(0)));
    const auto small = bench::NewPicture(1000, 1000, bench::kRGB);
    Measure(state, &from, nullptr, [&] { bench::Call(small, "Scale", from.picture, Ref<Object>(), 1, 1000, 1000); });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("side")->Arg(8000)->UseManualTime()->Unit(benchmark::kMillisecond);
    if (std::getenv("TQX_BENCH_HUGE")) benchmark->Arg(40000)->Iterations(1);
}

BENCHMARK(BM_MappedFill)->Apply(Sizes);
BENCHMARK(BM_MappedGamma)->Apply(Sizes);
BENCHMARK(BM_MappedGammaMirrored)->Apply(Sizes);
BENCHMARK(BM_MappedVMirror)->Apply(Sizes);
BENCHMARK(BM_MappedRotate90)->Apply(Sizes);
BENCHMARK(BM_MappedShrink)->Apply(Sizes);

}  // namespace
