#include <benchmark/benchmark.h>

#include "bench/harness/runner.h"

int bench::time_cases(const std::vector<timed_case>& cases, int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (const timed_case& timed : cases) {
        benchmark::RegisterBenchmark(timed.name.c_str(), [&timed](benchmark::State& state) {
            timed.prepare();
            while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(timed.batch)))
                timed.run(timed.batch);
            timed.finish();
            state.counters["octets"] = timed.octets;
        });
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
