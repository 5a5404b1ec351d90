#include <benchmark/benchmark.h>

#include "host/calls/Runtime.h"
#include "host/framework/Framework.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    host::RegisterFramework(host::Runtime::Get());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
