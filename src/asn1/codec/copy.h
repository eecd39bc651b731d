// Copying a few octets without a call: texts and byte strings are short.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/export.h"
#include "asn1/load.h"

// For the small parts that a codec function is made of.
#define ZR_INLINE [[gnu::always_inline]] inline

namespace zr {

// Copies `count` octets, at least a Block's and at most two, as a first and a last Block that may overlap.
template <class Block>
inline void copy_ends(unsigned char* to, const unsigned char* from, size_t count) {
    const Block first = load<Block>(from), last = load<Block>(from + count - sizeof(Block));
    store(to, first);
    store(to + count - sizeof(Block), last);
}

#ifdef __SSE2__
// A vector: compilers keep it in a register.
using sixteen = uint64_t __attribute__((vector_size(16)));
#endif

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
        const auto first_part = load<uint64_t>(from), second_part = load<uint64_t>(from + second);
        const auto third_part = load<uint64_t>(from + third), last_part = load<uint64_t>(from + count - 8);
        store(to, first_part);
        store(to + second, second_part);
        store(to + third, third_part);
        store(to + count - 8, last_part);
        return;
    }
#endif
    copy_octets(to, source, count);
}

}  // namespace zr
