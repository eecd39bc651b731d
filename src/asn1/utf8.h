// Whether octets are UTF-8 (RFC 3629): the shortest form of code points up to U+10FFFF without surrogates.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <cstring>

#include "asn1/ascii.h"

namespace zr {

inline bool is_utf8(const unsigned char* octets, size_t count) {
    const unsigned char* at = octets;
    const unsigned char* const end = octets + count;
    while (at != end) {
        if (end - at >= 8 && is_ascii(at, 8)) {
            at += 8;
            continue;
        }
        const unsigned char lead = *at++;
        if (lead < 0x80) continue;
        if (lead < 0xC2 || lead > 0xF4) return false;
        const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        if (end - at < more) return false;
        // The first octet that follows rules out long forms, surrogates and what lies above U+10FFFF.
        const unsigned char least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned char most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        if (*at < least || *at > most) return false;
        for (int i = 1; i < more; ++i)
            if ((at[i] & 0xC0) != 0x80) return false;
        at += more;
    }
    return true;
}

// The same without a zero octet.
[[gnu::noinline]] inline bool is_utf8_without_zero(const unsigned char* octets, size_t count) {
    return std::memchr(octets, 0, count) == nullptr && is_utf8(octets, count);
}

// The same, quicker where the octets are ASCII, as most texts are. Many octets at a time are looked at, some of them
// twice.
inline bool is_text(const unsigned char* octets, size_t count) {
#ifdef __SSE2__
    if (count >= 16) {
        const auto positive = [](const unsigned char* at) {
            return _mm_cmpgt_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)), _mm_setzero_si128());
        };
        __m128i all = positive(octets + count - 16);
        for (size_t at = 0; at + 16 < count; at += 16)
            all = _mm_and_si128(all, positive(octets + at));
        return _mm_movemask_epi8(all) == 0xFFFF || is_utf8_without_zero(octets, count);
    }
#endif
    constexpr uint64_t ones = 0x0101010101010101u;
    constexpr uint64_t high_bits = 0x8080808080808080u;
    // A high bit in what this gives tells of an octet that is 0 or not ASCII: the lowest zero octet borrows.
    const auto other = [](uint64_t eight) { return eight | (eight - ones); };
    uint64_t found = 0;
    if (count >= 8) {
        found = other(load<uint64_t>(octets + count - 8));
        for (size_t at = 0; at + 8 < count; at += 8)
            found |= other(load<uint64_t>(octets + at));
    } else if (count >= 4) {
        const auto first = load<uint32_t>(octets), last = load<uint32_t>(octets + count - sizeof(uint32_t));
        found = other(uint64_t{first} << 32 | last);
    } else if (count != 0) {
        found = other(ones << 24 | uint64_t{octets[0]} << 16 | uint64_t{octets[count / 2]} << 8 | octets[count - 1]);
    }
    return (found & high_bits) == 0 || is_utf8_without_zero(octets, count);
}

}  // namespace zr
