// What T.61 has for the characters of other code sets, as tables and for words of characters.
#pragma once

#include <array>
#include <cstdint>

#include "asn1/asnstrng/words.h"

namespace zr {

using t61_table = std::array<uint16_t, 256>;

// In all tables 0 is what has no counterpart; U+0000 itself has none.
extern const t61_table t61_to_bmp;  // of one octet
extern const t61_table ia5_to_t61;  // one octet, or an accent and its letter; indexed by the character

// An accent octet stands before its letter; before a control octet it is dropped.
constexpr unsigned int first_accent = 0xC1;
constexpr unsigned int last_accent = 0xCF;
extern const std::array<t61_table, last_accent - first_accent + 1> t61_compositions;

constexpr bool is_t61_accent(unsigned int octet) { return octet >= first_accent && octet <= last_accent; }

// Mark the octets of a word that are not the same in T.61 and in ASCII, and some control octets that are: T.61 reads
// 24, and nothing reads 23 and 24, as ASCII does.
constexpr word not_same_from_t61(word octets) {
    const word low = octets & ascii_octets;
    return octets | ~is_between(low, 0x20, 0x7E) | ~differs(low, 0x24);
}
constexpr word not_same_to_t61(word octets) {
    const word low = octets & ascii_octets;
    return octets | ~is_between(low, 0x20, 0x7E) | is_between(low, 0x23, 0x24);
}

}  // namespace zr
