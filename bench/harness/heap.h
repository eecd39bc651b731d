// What a stretch of the program took from the heap. It is counted by a library (heap.cpp) that stands in front of the
// allocator when the program is started with LD_PRELOAD, so that programs without it run undisturbed.
#pragma once

#include <cstddef>

namespace bench {

struct heap_use {
    size_t allocations;  // calls of malloc, calloc, realloc and the aligned forms
    size_t peak;         // octets more than at the start, at most
};

// Exported by the library: begins a stretch when `use` is null, else ends it.
using heap_watch = void(heap_use* use);
constexpr const char* heap_watch_name = "bench_heap_watch";

}  // namespace bench
