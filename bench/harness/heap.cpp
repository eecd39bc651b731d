#include "bench/harness/heap.h"

#include <malloc.h>

#include <cerrno>

// The C library's own allocator under its second names.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);
}

namespace {

bench::heap_use total;  // allocations so far; peak of `live` in this stretch
size_t live;

void* gained(void* p) {
    if (p == nullptr) return p;
    ++total.allocations;
    live += malloc_usable_size(p);
    if (live > total.peak) total.peak = live;
    return p;
}

void lost(void* p) {
    const size_t size = p == nullptr ? 0 : malloc_usable_size(p);
    live -= size < live ? size : live;
}

}  // namespace

extern "C" {

void* malloc(size_t size) { return gained(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return gained(__libc_calloc(count, size)); }
void* realloc(void* p, size_t size) {
    lost(p);
    return gained(__libc_realloc(p, size));
}
void* memalign(size_t alignment, size_t size) { return gained(__libc_memalign(alignment, size)); }
void* aligned_alloc(size_t alignment, size_t size) { return gained(__libc_memalign(alignment, size)); }
int posix_memalign(void** p, size_t alignment, size_t size) {
    *p = gained(__libc_memalign(alignment, size));
    return *p == nullptr ? ENOMEM : 0;
}
void free(void* p) {
    lost(p);
    __libc_free(p);
}

void bench_heap_watch(bench::heap_use* use) {
    static size_t live_before;
    if (use == nullptr) {
        total = {};
        total.peak = live_before = live;
    } else {
        *use = {total.allocations, total.peak - live_before};
    }
}
}
