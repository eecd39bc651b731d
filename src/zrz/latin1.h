// ISO 8859-1, whose octets are the first 256 characters of Unicode: to UTF-8 and back without one of the C library's
// converters, most texts eight octets at a time. The verdicts are the C library's.
#pragma once

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "asn1/ascii.h"
#include "asn1/load.h"

namespace zr {

// Whether nl_langinfo(CODESET) names it.
inline bool is_latin1(const char* code_set) {
    return strcasecmp(code_set, "ISO-8859-1") == 0 || strcasecmp(code_set, "ISO8859-1") == 0;
}

// How many octets a text takes in UTF-8.
inline size_t utf8_octets_of_latin1(const unsigned char* at, size_t count) {
    size_t octets = count;
    for (; count >= 8; count -= 8, at += 8)
        octets += static_cast<size_t>(((load<uint64_t>(at) & high_bits_of_eight) >> 7) * eight_times(1) >> 56);
    for (; count != 0; --count)
        octets += *at++ >> 7;
    return octets;
}

// So many octets more than a result needs the block for it has.
constexpr size_t latin1_slack = 8;

// What is left of a text. Of one that is shorter than eight octets they are loaded one by one.
struct text_rest {
    text_rest(const unsigned char* text, size_t count) : at(text), end(text + count), is_long(count >= 8) {}

    size_t left() const { return static_cast<size_t>(end - at); }
    // The next eight octets; behind the last one come zeros. One at least must be left.
    uint64_t next_eight() const {
        if (left() >= 8) return load<uint64_t>(at);
        if (is_long) return without_first(load<uint64_t>(end - 8), 8 - left());
        unsigned char eight[8] = {};
        for (size_t i = 0; i < left(); ++i)
            eight[i] = at[i];
        return load<uint64_t>(eight);
    }
    // Of eight octets those behind the first `count`, which are fewer than eight, and zeros.
    static uint64_t without_first(uint64_t eight, size_t count) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
        return eight << 8 * count;
#else
        return eight >> 8 * count;
#endif
    }

    const unsigned char* at;
    const unsigned char* const end;
    const bool is_long;
};

// Copies ASCII octets up to the first one that is none and moves both positions on behind them. Behind those up to
// eight octets are written.
inline void copy_ascii(text_rest& from, unsigned char*& to) {
    while (from.at != from.end) {
        const uint64_t eight = from.next_eight();
        store(to, eight);
        const bool is_ascii = (eight & high_bits_of_eight) == 0;
        const size_t count = is_ascii ? std::min<size_t>(from.left(), 8) : octets_before_high(eight);
        from.at += count;
        to += count;
        if (!is_ascii) return;
    }
}

// Converts to UTF-8 and returns where the result ends.
inline unsigned char* latin1_to_utf8(const unsigned char* text, size_t count, unsigned char* to) {
    for (text_rest from(text, count);;) {
        copy_ascii(from, to);
        if (from.at == from.end) return to;
        const unsigned int character = *from.at++;
        *to++ = static_cast<unsigned char>(0xC0 | character >> 6);
        *to++ = static_cast<unsigned char>(0x80 | (character & 0x3F));
    }
}

// Converts from UTF-8, into a block of as many octets, and returns where the result ends; null for octets that are not
// UTF-8 or have another character.
inline unsigned char* utf8_to_latin1(const unsigned char* text, size_t count, unsigned char* to) {
    for (text_rest from(text, count);;) {
        copy_ascii(from, to);
        if (from.at == from.end) return to;
        // Characters from 80 on take two octets, C2 80 to C3 BF.
        const unsigned char* const at = from.at;
        if (from.left() < 2 || (at[0] & 0xFE) != 0xC2 || (at[1] & 0xC0) != 0x80) return nullptr;
        *to++ = static_cast<unsigned char>(at[0] << 6 | (at[1] & 0x3F));
        from.at += 2;
    }
}

}  // namespace zr
