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

// What scripts do a million times, beside the same in Python.
struct Row {
    const char* name;
    const char* script;
    const char* python;
    const char* output;
};

constexpr Row kRows[] = {
    {"Empty", "", "", ""},
    {"Additions", "Dim s As Int64\nFor i As Integer = 1 To 4000000\n  s = s + i\nNext\nPrint s\n",
     "s = 0\nfor i in range(1, 4000001):\n    s = s + i\nprint(s)\n", "8000002000000\n"},
    {"BytesOfABlock",
     "Dim m As New MemoryBlock(1000)\nDim s As Integer\nFor j As Integer = 1 To 4000\n"
     "  For i As Integer = 0 To 999\n    m.Byte(i) = i\n  Next\nNext\nPrint m.Byte(999)\n",
     "m = bytearray(1000)\nfor j in range(4000):\n    for i in range(1000):\n        m[i] = i & 255\nprint(m[999])\n",
     "231\n"},
    {"CharactersOfAText",
     "Dim s As String\nFor i As Integer = 1 To 80000\n  s = s + Chr(97 + i Mod 26)\nNext\nDim n As Integer\n"
     "For j As Integer = 1 To 11\n  For i As Integer = 1 To 80000\n    If Mid(s, i, 1) = \"e\" Then n = n + 1\n"
     "  Next\nNext\nPrint n\n",
     "s = ''.join(chr(97 + i % 26) for i in range(1, 80001))\nn = 0\nfor j in range(11):\n"
     "    for i in range(80000):\n        if s[i] == 'e': n = n + 1\nprint(n)\n",
     "33847\n"},
    {"RaiseAndCatch",
     "Dim n As Integer\nFor i As Integer = 1 To 300000\n  Try\n    Raise New IOException\n  Catch e As IOException\n"
     "    n = n + 1\n  End Try\nNext\nPrint n\n",
     "n = 0\nfor i in range(300000):\n    try:\n        raise OSError()\n    except OSError as e:\n        n = n + 1\n"
     "print(n)\n",
     "300000\n"},
    {"NumberFunctions",
     "Dim x As Double\nFor i As Integer = 1 To 2000000\n  x = Max(Abs(Sqrt(i) - x), 1.0)\nNext\nPrint x > 0\n",
     "from math import sqrt\nx = 0.0\nfor i in range(1, 2000001):\n    x = max(abs(sqrt(i) - x), 1.0)\nprint(x > 0)\n",
     "True\n"},
    {"AGrowingText", "Dim s As String\nFor i As Integer = 1 To 100000\n  s = s + \"abcdef\"\nNext\nPrint LenB(s)\n",
     "s = ''\nfor i in range(100000):\n    s = s + 'abcdef'\nprint(len(s))\n", "600000\n"},
    {"AQueue",
     "Dim a() As Integer\nFor i As Integer = 1 To 100000\n  a.Insert 0, i\nNext\nWhile a.Ubound >= 0\n  a.Remove 0\n"
     "Wend\nPrint a.Ubound\n",
     "a = []\nfor i in range(100000):\n    a.insert(0, i)\nwhile len(a) > 0:\n    a.pop(0)\nprint(len(a) - 1)\n",
     "-1\n"},
    {"BytesOfARow",
     "Dim p As New PictureTQX(1000, 1, PictureTQX.ImageFormatG)\nDim row As MemoryBlock = p.RawRow(0)\n"
     "Dim n As Integer\nFor j As Integer = 1 To 1000\n  For i As Integer = 0 To 999\n    n = n + row.Byte(i)\n"
     "  Next\nNext\nPrint n\n",
     "row = bytes(1000)\nn = 0\nfor j in range(1000):\n    for i in range(1000):\n        n = n + row[i]\nprint(n)\n",
     "0\n"},
    {"APropertyOfThePlugin",
     "Dim p As New PictureTQX(10, 10, PictureTQX.ImageFormatG)\nDim n As Integer\nFor i As Integer = 1 To 4000000\n"
     "  n = n + p.Width\nNext\nPrint n\n",
     "class P: pass\np = P()\np.width = 10\nn = 0\nfor i in range(4000000):\n    n = n + p.width\nprint(n)\n",
     "40000000\n"},
    {"ACallOfThePlugin",
     "Dim p As New PictureTQX(1, 1, PictureTQX.ImageFormatG)\nFor i As Integer = 1 To 2000000\n  p.FillRect(0, 0, 0, "
     "0, 1)\n"
     "Next\nPrint p.Width\n",
     "def fill(x, y, w, h, v): pass\nfor i in range(2000000):\n    fill(0, 0, 0, 0, 1)\nprint(1)\n", "1\n"},
};

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

const bool registered = [] {
    for (const Row& row : kRows) {
        const auto add = [&row](const std::string& name, const std::string& runner, const char* program) {
            benchmark::RegisterBenchmark(
                (row.name + name).c_str(),
                [&row, runner, program](benchmark::State& state) { RunProgram(state, runner, program, row.output); })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        };
        add("", kTqx, row.script);
        add("InPython", "/usr/bin/python3", row.python);
    }
    return true;
}();

}  // namespace
