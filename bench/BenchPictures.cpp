// Photo-like pictures for the benchmarks, calls by name, and the memcpy beside each measure.
#include "bench/BenchPictures.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <memory>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "host/calls/PluginLoader.h"
#include "host/calls/Runtime.h"

namespace bench {

namespace {

const host::Class& PictureClass() {
    static const host::Plugin& plugin = host::LoadPlugin(TQX_PLUGIN_PATH);
    (void)plugin;
    return host::Runtime::Get().ClassNamed("PictureTQX");
}

host::Choice Choose(const std::vector<const host::Method*>& candidates, const std::vector<Value>& arguments,
                    const Value* assigned = nullptr) {
    host::Choice choice = host::ChooseOverload(candidates, arguments, assigned);
    if (choice.method) return choice;
    std::fprintf(stderr, "a benchmark calls what is not there: %s\n", choice.problem.c_str());
    std::exit(1);
}

// --- Photo ------------------------------------------------------------------------------------

// A reproducible random byte for a place.
std::uint32_t Hash(std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
    std::uint32_t h = x * 0x9E3779B1U ^ y * 0x85EBCA77U ^ channel * 0xC2B2AE3DU;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    return h ^ (h >> 15);
}

// Smooth noise 0..255: random values on a grid of `cell` pixels, blended between.
float Smooth(int x, int y, int cell, int channel) {
    const int column = x / cell, line = y / cell;
    const float across = static_cast<float>(x % cell) / static_cast<float>(cell);
    const float down = static_cast<float>(y % cell) / static_cast<float>(cell);
    const auto corner = [&](int dx, int dy) {
        return static_cast<float>(Hash(static_cast<std::uint32_t>(column + dx), static_cast<std::uint32_t>(line + dy),
                                       static_cast<std::uint32_t>(channel * 1000 + cell)) &
                                  255);
    };
    const float top = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * across;
    const float bottom = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * across;
    return top + (bottom - top) * down;
}

std::uint8_t PhotoByte(int x, int y, int channel) {
    const float edge = ((x / 331 + y / 217) & 1) != 0 ? 28.0F : -28.0F;
    const auto place = Hash(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 77U + channel);
    const float grain = static_cast<float>(place & 15) - 7.5F;
    const float value = 0.8F * Smooth(x, y, 256, channel) + 0.2F * Smooth(x, y, 32, channel) + edge + grain;
    return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 255.0F));
}

// The pixels as packed red, green, blue, alpha; made once a size.
const Value& PhotoValue(int width, int height) {
    static std::map<std::pair<int, int>, Value> made;
    Value& bytes = made[{width, height}];
    if (!bytes.IsNothing()) return bytes;
    std::vector<char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    char* at = pixels.data();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 4; ++channel) *at++ = static_cast<char>(PhotoByte(x, y, channel));
    bytes = Value(std::string_view(pixels.data(), pixels.size()));
    return bytes;
}

// --- Measure ----------------------------------------------------------------------------------

// The processor's time of this thread: while others have the processor, it stands still.
double ThreadSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double Seconds(const std::function<void()>& call) {
    const double start = ThreadSeconds();
    call();
    return ThreadSeconds() - start;
}

// Touched memory in large pages, so that the memcpy pays for no page faults.
using Block = std::unique_ptr<char, decltype(&std::free)>;

Block MakeBlock(std::size_t size) {
    constexpr std::size_t kLargePage = 2U << 20;
    const std::size_t whole = (size + kLargePage - 1) / kLargePage * kLargePage;
    Block block(static_cast<char*>(std::aligned_alloc(kLargePage, whole)), &std::free);
    if (!block) std::abort();
    madvise(block.get(), whole, MADV_HUGEPAGE);
    std::memset(block.get(), 1, whole);
    return block;
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

}  // namespace

int PixelSize(int format) {
    switch (format) {
        case kRGB:
        case kBGR:
            return 3;
        case kGray:
            return 1;
        case kGrayAlpha:
            return 2;
        default:
            return 4;
    }
}

Ref<Object> NewPicture(int width, int height, int format) {
    const host::Class& type = PictureClass();
    auto picture = host::NewObject(type);
    host::Choice choice = Choose(type.FindMethods("Constructor"), {Value(width), Value(height), Value(format)});
    host::Invoke(*choice.method, picture.get(), choice.arguments);
    return picture;
}

std::string_view PhotoBytes(int width, int height) { return PhotoValue(width, height).text(); }

Ref<Object> Photo(int width, int height, int format) {
    const Value& bytes = PhotoValue(width, height);
    auto picture = NewPicture(width, height, format);
    host::Choice choice = Choose(PictureClass().FindMethods("DataStringInFormat"), {Value(kRGBA)}, &bytes);
    choice.arguments.pop_back();
    host::InvokeSetter(*choice.method, picture.get(), choice.arguments, bytes);
    return picture;
}

Value CallWith(const Ref<Object>& object, std::string_view method, const std::vector<Value>& arguments) {
    host::Choice choice = Choose(object->type->FindMethods(method), arguments);
    return host::Invoke(*choice.method, object.get(), choice.arguments);
}

Work WorkOf(int width, int height, int fromFormat, int toFormat) {
    const double pixels = static_cast<double>(width) * height;
    const double from = pixels * PixelSize(fromFormat);
    const double to = pixels * PixelSize(toFormat);
    return {pixels, from + to, std::max(from, to)};
}

void Measure(benchmark::State& state, const Work& work, const std::function<void()>& call,
             const std::function<void()>& prepare) {
    const auto size = static_cast<std::size_t>(work.pictureBytes);
    const Block from = MakeBlock(size), to = MakeBlock(size);
    std::vector<double> copies, calls;
    call();  // touches what the call allocates or writes first
    for (auto _ : state) {
        prepare();
        copies.push_back(Seconds([&] {
            std::memcpy(to.get(), from.get(), size);
            benchmark::DoNotOptimize(to.get());
            benchmark::ClobberMemory();
        }));
        calls.push_back(Seconds(call));
        state.SetIterationTime(calls.back());
    }
    const auto report = [&](const char* rate, const char* share, double seconds, double copySeconds) {
        state.counters[rate] = work.pixels / seconds / 1e6;
        state.counters[share] = 100 * (work.bytes / seconds) / (2 * work.pictureBytes / copySeconds);
    };
    report("MP/s", "memcpy%", Median(calls), Median(copies));
    report("best_MP/s", "best_memcpy%", *std::min_element(calls.begin(), calls.end()),
           *std::min_element(copies.begin(), copies.end()));
}

}  // namespace bench
