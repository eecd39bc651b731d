// ISO 8859-1, whose octets are the first 256 characters of Unicode: to UTF-8 and back without one of the C library's
// converters, most texts eight octets at a time. The verdicts are the C library's.
#pragma once

#include <strings.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "asn1/ascii.h"

namespace zr {

// Whether nl_langinfo(CODESET) names it.
inline bool is_latin1(const char* code_set) {
    return strcasecmp(code_set, "ISO-8859-1") == 0 || strcasecmp(code_set, "ISO8859-1") == 0;
}

// Copies ASCII octets up to the first one that is none and moves both positions on behind them. Behind those eight
// octets may be written, but never more than the source still has.
inline void copy_ascii(const unsigned char*& at, const unsigned char* end, unsigned char*& to) {
    for (; end - at >= 8; at += 8, to += 8) {
        const uint64_t eight = load_eight(at);
        std::memcpy(to, &eight, sizeof eight);
        if ((eight & high_bits_of_eight) == 0) continue;
        const size_t count = ascii_before(eight);
        at += count;
        to += count;
        return;
    }
    while (at != end && *at < 0x80)
        *to++ = *at++;
}

// Converts to UTF-8 into a block of twice as many octets, and returns where the result ends.
inline unsigned char* latin1_to_utf8(const unsigned char* at, size_t count, unsigned char* to) {
    const unsigned char* const end = at + count;
    for (;;) {
        copy_ascii(at, end, to);
        if (at == end) return to;
        const unsigned int character = *at++;
        *to++ = static_cast<unsigned char>(0xC0 | character >> 6);
        *to++ = static_cast<unsigned char>(0x80 | (character & 0x3F));
    }
}

// Converts from UTF-8 into a block of as many octets, and returns where the result ends; null for octets that are not
// UTF-8 or have another character.
inline unsigned char* utf8_to_latin1(const unsigned char* at, size_t count, unsigned char* to) {
    const unsigned char* const end = at + count;
    for (;;) {
        copy_ascii(at, end, to);
        if (at == end) return to;
        // Characters from 80 on take two octets, C2 80 to C3 BF.
        if (end - at < 2 || (at[0] & 0xFE) != 0xC2 || (at[1] & 0xC0) != 0x80) return nullptr;
        *to++ = static_cast<unsigned char>(at[0] << 6 | (at[1] & 0x3F));
        at += 2;
    }
}

}  // namespace zr
