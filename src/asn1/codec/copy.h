// Copying a few octets without a call: texts and byte strings are short.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "asn1/export.h"

// For the small parts that a codec function is made of.
#define ZR_INLINE [[gnu::always_inline]] inline

namespace zr {

// Copies `count` octets, at least a Block's and at most two, as a first and a last Block that may overlap.
template <class Block>
inline void copy_ends(unsigned char* to, const unsigned char* from, size_t count) {
    Block first;
    Block last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + count - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + count - sizeof last, &last, sizeof last);
}

// What compilers keep in a register, where there are vectors.
struct sixteen {
    uint64_t parts[2];
};

// Copies `Size` octets as one value, which the compiler can keep in registers.
template <size_t Size>
inline void copy_fixed(unsigned char* to, const unsigned char* from) {
    struct [[gnu::may_alias]] value {
        unsigned char octets[Size];
    };
    *reinterpret_cast<value*>(to) = *reinterpret_cast<const value*>(from);
}

// memcpy, always as a call: where there are no vectors gcc writes a string instruction in its place, which is slow to
// start.
void* called_memcpy(void* to, const void* from, size_t count) asm("memcpy");

// Copies more than 32 octets.
ZR_CODEC_API void copy_many(unsigned char* to, const unsigned char* from, size_t count);

// Copies what most texts and byte strings take without a call. The blocks do not overlap.
ZR_INLINE void copy_octets(unsigned char* to, const void* source, size_t count) {
    const auto* from = static_cast<const unsigned char*>(source);
#ifdef __SSE2__
    if (count >= 16) {
        if (count > 32) return copy_many(to, from, count);
        copy_ends<sixteen>(to, from, count);
#else
    if (count > 16) {
        called_memcpy(to, from, count);
#endif
    } else if (count >= 8) {
        copy_ends<uint64_t>(to, from, count);
    } else if (count >= 4) {
        copy_ends<uint32_t>(to, from, count);
    } else if (count != 0) {
        to[0] = from[0];
        to[count / 2] = from[count / 2];
        to[count - 1] = from[count - 1];
    }
}

// The same for texts whose lengths are hard to foresee, as they are in a list: from 8 to 32 octets without a branch, as
// four parts that may overlap.
ZR_INLINE void copy_varied(unsigned char* to, const void* source, size_t count) {
#ifdef __SSE2__
    if (count - 8 <= 24) {
        const auto* from = static_cast<const unsigned char*>(source);
        const size_t second = count < 16 ? count - 8 : 8;
        const size_t third = count < 16 ? 0 : count - 16;
        uint64_t parts[4];
        std::memcpy(&parts[0], from, 8);
        std::memcpy(&parts[1], from + second, 8);
        std::memcpy(&parts[2], from + third, 8);
        std::memcpy(&parts[3], from + count - 8, 8);
        std::memcpy(to, &parts[0], 8);
        std::memcpy(to + second, &parts[1], 8);
        std::memcpy(to + third, &parts[2], 8);
        std::memcpy(to + count - 8, &parts[3], 8);
        return;
    }
#endif
    copy_octets(to, source, count);
}

}  // namespace zr
