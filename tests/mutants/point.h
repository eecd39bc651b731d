// A point of change in the copy of the sources that mutants.py builds: included before all else of each file.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace zr_mutant {

// Which points have been reached; what the program reached is appended to the file ZR_REACHED when it ends.
constexpr int most_points = 16384;
inline unsigned char reached[most_points];

inline void append_reached() {
    const int file = open(std::getenv("ZR_REACHED"), O_WRONLY | O_CREAT | O_APPEND, 0666);
    if (file < 0 || write(file, reached, sizeof reached) != static_cast<ssize_t>(sizeof reached)) abort();
    close(file);
}

inline int start() {
    if (std::getenv("ZR_REACHED") != nullptr) std::atexit(append_reached);
    const char* number = std::getenv("ZR_MUTANT");
    return number != nullptr ? std::atoi(number) : -1;
}
inline const int chosen = start();

// Whether point N is the one to change. The section "zr_points" lists the points that code was made for.
template <int N>
[[gnu::always_inline]] inline bool at() {
    asm volatile(".pushsection zr_points,\"\",@progbits\n.long %c0\n.popsection" ::"i"(N));
    reached[N] = 1;
    return chosen == N;
}

// The compiler evaluates what stands there.
template <int N>
[[gnu::always_inline]] constexpr bool on() {
    return !__builtin_is_constant_evaluated() && at<N>();
}

}  // namespace zr_mutant
