// What is timed, and the two programs that time it: Google Benchmark, and a plain loop where that is not to be had.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// timed_case is one thing to time, called `name`: "workload/peer/encode" or ".../decode".
struct timed_case {
    std::string name;
    double octets;  // of the encoding, for the rate
    size_t batch;   // how often `run` is to repeat at a time
    std::function<void()> prepare;
    std::function<void(size_t times)> run;
    std::function<void()> finish;
};

// time_cases runs the cases repeatedly and in mixed order, and writes the times as JSON. It takes Google Benchmark's
// flags and gives the program's exit status.
int time_cases(const std::vector<timed_case>& cases, int argc, char** argv);

}  // namespace bench
