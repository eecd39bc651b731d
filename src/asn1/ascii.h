// Whether octets are ASCII, eight or sixteen at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/load.h"

namespace zr {

constexpr uint64_t eight_times(unsigned char octet) { return ~uint64_t{0} / 0xFF * octet; }
constexpr uint64_t high_bits_of_eight = eight_times(0x80);

// How many of eight octets come before the first one with its high bit set; one at least must have it.
inline size_t octets_before_high(uint64_t eight) {
    const uint64_t high = eight & high_bits_of_eight;
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return static_cast<size_t>(__builtin_clzll(high)) / 8;
#else
    return static_cast<size_t>(__builtin_ctzll(high)) / 8;
#endif
}

inline bool is_ascii(const void* octets, size_t count) {
    const auto* at = static_cast<const unsigned char*>(octets);
    if (count >= 8) {
        uint64_t all = load<uint64_t>(at + count - 8);  // the last eight, some of them twice
        for (; count > 8; count -= 8, at += 8) {
            all |= load<uint64_t>(at);
            if ((all & high_bits_of_eight) != 0) return false;
        }
        return (all & high_bits_of_eight) == 0;
    }
    unsigned int all = 0;
    for (; count != 0; --count)
        all |= *at++;
    return (all & 0x80) == 0;
}

}  // namespace zr
