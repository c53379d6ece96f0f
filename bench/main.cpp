// Runs the benchmarks; the command line is that of the benchmark library (--benchmark_filter=...).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    try {
        return benchmark::RunSpecifiedBenchmarks() == 0 ? 1 : 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tav_bench: %s\n", failure.what());
        return 1;
    }
}
