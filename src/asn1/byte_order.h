// Octets as BER and the wide code sets have them, the most significant first, whatever order the machine stores a
// number's octets in.
#pragma once

#include <cstdint>

namespace zr {

// A number whose octets in memory are those of `value`, the most significant first; given such a number, its value.
template <class T>
constexpr T most_significant_first(T value) {
    static_assert(sizeof(T) == 4 || sizeof(T) == 8, "a number of 32 or 64 bits");
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return value;
#else
    if constexpr (sizeof(T) == 8) return static_cast<T>(__builtin_bswap64(value));
    return static_cast<T>(__builtin_bswap32(static_cast<uint32_t>(value)));
#endif
}

// A number whose two octets in memory are these.
constexpr uint16_t pair_of_octets(unsigned char first, unsigned char second) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return static_cast<uint16_t>(first << 8 | second);
#else
    return static_cast<uint16_t>(first | second << 8);
#endif
}

}  // namespace zr
