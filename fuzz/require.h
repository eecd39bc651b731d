// What a fuzz target asks of every input, and its standard error, which the library is kept from.
#pragma once

#include <errno.h>

#include <cstdio>
#include <cstdlib>

namespace zr_test {

inline FILE* const printed = stderr;

// Ends the program with a message unless `holds`.
inline void require(bool holds, const char* what, const char* about = nullptr) {
    if (holds) return;
    std::fprintf(printed, "%s: %s%s%s\n", program_invocation_short_name, about == nullptr ? "" : about,
                 about == nullptr ? "" : ": ", what);
    std::abort();
}

// While it lives nothing that C code prints to standard error is seen.
class silence {
public:
    silence() {
        static FILE* const nowhere = std::fopen("/dev/null", "w");
        require(nowhere != nullptr, "there is no /dev/null");
        stderr = nowhere;
    }
    ~silence() { stderr = printed; }
    silence(const silence&) = delete;
    silence& operator=(const silence&) = delete;
};

}  // namespace zr_test
