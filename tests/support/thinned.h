// How many of a long row of inputs a test takes.
#pragma once

#include <cstddef>

namespace zr_test {

// One in `most` where the sanitizers or an emulated processor make each many times as dear, and all in other builds.
constexpr size_t one_in([[maybe_unused]] size_t most) {
#ifdef ZR_THINNED
    return most;
#else
    return 1;
#endif
}

}  // namespace zr_test
