// All benchmarks, with the options and reports of Google Benchmark.

#include <benchmark/benchmark.h>

#include "measure.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    quorvane::benchmarks::RegisterAll();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
