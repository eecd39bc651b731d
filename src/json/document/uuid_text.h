// uuid_t as text (RFC 4122, 3): 8-4-4-4-12 digits.
#pragma once

#include <string_view>

#include "base_idls/zrnbase_asn.h"
#include "json/base/hex.h"

namespace zr::json {

constexpr size_t uuid_text_size = 36;

inline bool is_uuid(const record_type& type) { return &type == &record<uuid_t>::type; }

// Where a hyphen stands before octet i.
constexpr bool hyphen_before(size_t i) { return i == 4 || i == 6 || i == 8 || i == 10; }

// Writes 36 characters, in lower case.
inline void format_uuid(const void* contents, char* text) {
    const auto& id = *static_cast<const uuid_t*>(contents);
    const auto octet = [&](size_t i) -> unsigned {
        if (i < 4) return id.time_low >> (24 - 8 * i) & 255u;
        if (i < 6) return static_cast<unsigned>(id.time_mid) >> (40 - 8 * i) & 255u;
        if (i < 8) return static_cast<unsigned>(id.time_hi_and_version) >> (56 - 8 * i) & 255u;
        return i == 8 ? id.clock_seq_hi_and_reserved : i == 9 ? id.clock_seq_low : id.node[i - 10];
    };
    for (size_t i = 0; i < 16; ++i) {
        if (hyphen_before(i)) *text++ = '-';
        *text++ = "0123456789abcdef"[octet(i) >> 4];
        *text++ = "0123456789abcdef"[octet(i) & 15];
    }
}

// Fills the UUID from 36 characters, digits in either case; false, with the UUID as it was, on any other text.
inline bool parse_uuid(std::string_view text, uuid_t& id) {
    if (text.size() != uuid_text_size) return false;
    unsigned char octets[16];
    size_t at = 0;
    int all = 0;  // negative when any is
    for (size_t i = 0; i < 16; ++i) {
        if (hyphen_before(i) && text[at++] != '-') return false;
        const int octet = hex_octet(text[at], text[at + 1]);
        at += 2;
        octets[i] = static_cast<unsigned char>(octet);
        all |= octet;
    }
    if (all < 0) return false;
    id.time_low = uint32_t{octets[0]} << 24 | uint32_t{octets[1]} << 16 | uint32_t{octets[2]} << 8 | octets[3];
    id.time_mid = static_cast<uint16_t>(octets[4] << 8 | octets[5]);
    id.time_hi_and_version = static_cast<uint16_t>(octets[6] << 8 | octets[7]);
    id.clock_seq_hi_and_reserved = octets[8];
    id.clock_seq_low = octets[9];
    for (size_t i = 0; i < 6; ++i)
        id.node[i] = octets[10 + i];
    return true;
}

}  // namespace zr::json
