// Whether octets are UTF-8 (RFC 3629): the shortest form of code points up to U+10FFFF without surrogates.
#pragma once

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

}  // namespace zr
