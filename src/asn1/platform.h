// What the C libraries that the sources are compiled with have under different names.
#pragma once

#include <malloc.h>
#include <string.h>

#include <cstddef>

namespace zr {

// Overwrites octets with zeros, also where nothing reads them afterwards.
inline void overwrite(void* block, size_t octets) {
#ifdef _WIN32
    if (octets == 0) return;
    memset(block, 0, octets);
    asm volatile("" : : "r"(block) : "memory");  // it may read the block, for all that the compiler knows
#else
    explicit_bzero(block, octets);
#endif
}

// The octets that a block from malloc has, at least those that were asked for. It must not be null.
inline size_t allocated_octets(void* block) {
#ifdef _WIN32
    return _msize(block);
#else
    return malloc_usable_size(block);
#endif
}

}  // namespace zr
