#include "base/heap.h"

#include <cstdint>
#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#include <sys/mman.h>
#endif

namespace zr::tool {

#if defined(__GLIBC__) && defined(MADV_HUGEPAGE)

void expect_record(size_t octets) {
    constexpr size_t least = size_t{1} << 19, most = size_t{1} << 29, large_page = size_t{1} << 21;
    if (octets < least || octets > most) return;
    const size_t room = 2 * octets + 2 * large_page;
    // One block of them is cut off the top of the heap, and goes back there whole.
    mallopt(M_MMAP_THRESHOLD, static_cast<int>(2 * most));
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * most));
    void* const block = std::malloc(room);
    const uintptr_t begin = (reinterpret_cast<uintptr_t>(block) + large_page - 1) / large_page * large_page;
    const uintptr_t end = (reinterpret_cast<uintptr_t>(block) + room) / large_page * large_page;
    if (block != nullptr) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    std::free(block);
}

#else

void expect_record(size_t) {}

#endif

}  // namespace zr::tool
