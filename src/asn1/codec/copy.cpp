#include "asn1/codec/copy.h"

namespace zr {

void copy_many(unsigned char* to, const unsigned char* from, size_t count) {
#ifdef __SSE2__
    // Blocks of 32 octets would go over the stack, where a secret among them would stay.
    if (count <= 64) {
        copy_ends<sixteen>(to, from, 32);
        copy_ends<sixteen>(to + count - 32, from + count - 32, 32);
        return;
    }
#endif
    called_memcpy(to, from, count);
}

}  // namespace zr
