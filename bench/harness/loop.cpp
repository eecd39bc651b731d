// A small loop in place of Google Benchmark, for the 32-bit build: Debian has that library for the machine's own word
// size only. Same flags, same order of the cases (mixed), same form of the results.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <regex>

#include "bench/harness/runner.h"

namespace {

double processor_ns() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// One repetition: ns for one time of the case.
double repetition(const bench::timed_case& timed, double least_ns) {
    timed.prepare();
    size_t times = 0;
    const double start = processor_ns();
    double taken;
    do {
        timed.run(timed.batch);
        times += timed.batch;
        taken = processor_ns() - start;
    } while (taken < least_ns);
    timed.finish();
    return taken / static_cast<double>(times);
}

}  // namespace

int bench::time_cases(const std::vector<timed_case>& cases, int argc, char** argv) {
    const char* out = "/dev/stdout";
    int repetitions = 1;
    double seconds = 0.1;
    std::regex filter(".*");
    for (int i = 1; i < argc; ++i) {
        const auto flag = [&](const char* name) {
            const size_t length = std::strlen(name);
            return std::strncmp(argv[i], name, length) == 0 ? argv[i] + length : nullptr;
        };
        if (const char* file = flag("--benchmark_out=")) out = file;
        if (const char* number = flag("--benchmark_repetitions=")) repetitions = std::atoi(number);
        if (const char* number = flag("--benchmark_min_time=")) seconds = std::atof(number);
        if (const char* pattern = flag("--benchmark_filter=")) filter = pattern;
    }

    std::vector<const timed_case*> order;
    for (const timed_case& timed : cases)
        if (std::regex_search(timed.name, filter)) order.insert(order.end(), static_cast<size_t>(repetitions), &timed);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));

    std::FILE* file = std::fopen(out, "w");
    if (file == nullptr) return 1;
    std::fprintf(file, "{\"benchmarks\": [");
    const char* separator = "";
    for (const timed_case* timed : order) {
        std::fprintf(file, "%s\n{\"name\": \"%s\", \"run_type\": \"iteration\", \"cpu_time\": %.3f, ", separator,
                     timed->name.c_str(), repetition(*timed, seconds * 1e9));
        std::fprintf(file, "\"time_unit\": \"ns\", \"octets\": %.0f}", timed->octets);
        separator = ",";
    }
    std::fprintf(file, "\n]}\n");
    return std::fclose(file) == 0 ? 0 : 1;
}
