#include "asn1/record/copy.h"

namespace zr {

// memcpy, always as a call: where there are no vectors gcc writes a string instruction in its place, which is slow to
// start.
void* called_memcpy(void* to, const void* from, size_t count) asm("memcpy");

void copy_by_call(unsigned char* to, const unsigned char* from, size_t count) {
#ifdef __SSE2__
    struct thirty_two {
        uint64_t parts[4];
    };
    if (count >= 32 && count <= 64) return copy_ends<thirty_two>(to, from, count);
#endif
    called_memcpy(to, from, count);
}

}  // namespace zr
