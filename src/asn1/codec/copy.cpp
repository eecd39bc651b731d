#include "asn1/codec/copy.h"

namespace zr {

void copy_many(unsigned char* to, const unsigned char* from, size_t count) {
    struct thirty_two {
        uint64_t parts[4];
    };
    if (count <= 64) {
        copy_ends<thirty_two>(to, from, count);
    } else {
        called_memcpy(to, from, count);
    }
}

}  // namespace zr
