// The library's reads and writes of memory, as a measure of its work that is the same on every run: a build with
// ZRASN_LIBFUZZER and the address sanitizer counts them (accesses.cpp); in others the count stays 0.
#pragma once

#include <cstdint>

namespace zr_test {

extern uint64_t accesses;

}  // namespace zr_test
