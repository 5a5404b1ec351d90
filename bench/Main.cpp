// The benchmarks' program: a host with the framework's classes, then whatever the command line
// picks.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string_view>

#include "bench/BenchPictures.h"
#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"

// The large picture of the benchmarks to standard output, for those who measure other programs on it.
int WritePhoto() {
    const std::string_view bytes = bench::PhotoBytes(4000, 3000);
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() ? 0 : 1;
}

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--photo") return WritePhoto();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    host::RegisterFramework(host::Runtime::Get());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
