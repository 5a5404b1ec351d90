// The script interpreter, beside python3 on the same loop. Both are measured as whole processes.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr const char* kAdditions = "Dim s As Int64\nFor i As Integer = 1 To 10000000\n  s = s + i\nNext\nPrint s\n";
constexpr const char* kAdditionsInPython = "s = 0\nfor i in range(1, 10000001):\n    s = s + i\nprint(s)\n";
constexpr const char* kAdditionsSum = "50000005000000\n";

// Every byte of a megapixel of RGB.
constexpr const char* kPixels =
    "Dim block As New MemoryBlock(3000000)\nFor i As Integer = 0 To 2999999\n  block.Byte(i) = i\nNext\n"
    "Print block.Byte(2999999)\n";
constexpr const char* kPixelsLast = "191\n";

constexpr const char* kCalls =
    "Function Fib(n As Integer) As Integer\n  If n < 2 Then Return n\n  Return Fib(n - 1) + Fib(n - 2)\n"
    "End Function\nPrint Fib(30)\n";
constexpr const char* kCallsResult = "832040\n";

std::string OutputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return output;
    char buffer[256];
    while (const std::size_t count = std::fread(buffer, 1, sizeof(buffer), pipe)) output.append(buffer, count);
    return pclose(pipe) == 0 ? output : std::string();
}

// Runs a program from a file again and again; its output is checked each time.
void RunProgram(benchmark::State& state, const std::string& runner, const char* program, const char* expected) {
    const auto path = std::filesystem::temp_directory_path() / ("tqx-bench-" + std::to_string(getpid()));
    std::ofstream(path) << program;
    for (auto _ : state)
        if (OutputOf(runner + ' ' + path.string()) != expected) state.SkipWithError("wrong output");
    std::filesystem::remove(path);
}

const std::string kTqx = TQX_COMMAND_PATH " run";

void TenMillionAdditions(benchmark::State& state) { RunProgram(state, kTqx, kAdditions, kAdditionsSum); }
void TenMillionAdditionsInPython(benchmark::State& state) {
    RunProgram(state, "python3", kAdditionsInPython, kAdditionsSum);
}
void MegapixelThroughMemoryBlock(benchmark::State& state) { RunProgram(state, kTqx, kPixels, kPixelsLast); }
void RecursiveCalls(benchmark::State& state) { RunProgram(state, kTqx, kCalls, kCallsResult); }

BENCHMARK(TenMillionAdditions)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(TenMillionAdditionsInPython)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(MegapixelThroughMemoryBlock)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(RecursiveCalls)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
