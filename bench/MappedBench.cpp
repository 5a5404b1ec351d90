// Pictures in scratch files, beside plain reading and writing of the same files.
//
// The files lie in the folder that TQX_BENCH_FOLDER names, or in the one for temporary files.
// With TQX_BENCH_SIDE set, pictures of that side are worked on as well; those of 40000 × 40000 pixels
// take 4.8 GB each.
#include <fcntl.h>
#include <sys/resource.h>
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

// Seconds of the processor, of the system's work for this process as well.
double ProcessorNow() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Time that was taken, by the clock and of the processor.
struct Taken {
    double seconds = 0;
    double processor = 0;

    template <class Work>
    double Add(const Work& work) {
        const double start = Now(), processorStart = ProcessorNow();
        work();
        const double taken = Now() - start;
        seconds += taken;
        processor += ProcessorNow() - processorStart;
        return taken;
    }
};

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

// Reads the whole of a file into a small buffer.
void ReadPlainly(const std::string& path) {
    std::vector<char> chunk(kChunk);
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    while (read(file, chunk.data(), chunk.size()) > 0) {
    }
    close(file);
}

// Writes over the whole of a file from a small buffer.
void WritePlainly(const std::string& path) {
    const std::vector<char> chunk(kChunk, 'x');
    auto left = static_cast<std::int64_t>(std::filesystem::file_size(path));
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    for (ssize_t written = 1; left > 0 && written > 0; left -= written)
        written = write(file, chunk.data(), std::min<std::size_t>(kChunk, static_cast<std::size_t>(left)));
    close(file);
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
//   processor%        the plain work's time of the processor, of the call's: what the machine's other
//                     work and the disk's speed do not change
//   peak_MB           the most memory that was resident in the call
void Measure(benchmark::State& state, const MappedPicture* reads, const MappedPicture* writes,
             const std::function<void()>& call) {
    const double megabytes = ((reads ? reads->Bytes() : 0) + (writes ? writes->Bytes() : 0)) / 1e6;
    Taken plain, taken;
    call();  // the files' pages are in memory then, as far as they fit
    for (auto _ : state) {
        plain.Add([&] {
            if (reads) ReadPlainly(reads->path);
            if (writes) WritePlainly(writes->path);
        });
        ForgetPeak();
        state.SetIterationTime(taken.Add(call));
        state.counters["peak_MB"] = std::max<double>(state.counters["peak_MB"], PeakMegabytes());
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["MB/s"] = megabytes * runs / taken.seconds;
    state.counters["plain_MB/s"] = megabytes * runs / plain.seconds;
    state.counters["plain%"] = 100 * plain.seconds / taken.seconds;
    state.counters["processor%"] = 100 * plain.processor / taken.processor;
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
    if (const char* const side = std::getenv("TQX_BENCH_SIDE")) benchmark->Arg(std::atoi(side));
}

BENCHMARK(BM_MappedFill)->Apply(Sizes);
BENCHMARK(BM_MappedGamma)->Apply(Sizes);
BENCHMARK(BM_MappedGammaMirrored)->Apply(Sizes);
BENCHMARK(BM_MappedVMirror)->Apply(Sizes);
BENCHMARK(BM_MappedRotate90)->Apply(Sizes);
BENCHMARK(BM_MappedShrink)->Apply(Sizes);

}  // namespace
