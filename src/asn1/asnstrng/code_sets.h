// Code sets of texts, and tables of the characters in them.
#pragma once

#include <array>
#include <cstdint>

#include "asn1/export.h"

// A code set is named by the universal tag number of its string type (X.680 8.4).
enum zr_code_set : unsigned int {
    zr_utf8 = 12,       // UTF-8
    zr_printable = 19,  // one octet a character, of the printable repertoire
    zr_t61 = 20,        // T.61: accents stand before their letters
    zr_ia5 = 22,        // one octet a character
    zr_visible = 26,    // one octet a character, of the visible repertoire
    zr_universal = 28,  // four octets a character, most significant first
    zr_bmp = 30,        // two octets a character, most significant first
};

// Indexed by an octet.
using zr_character_table = std::array<int32_t, 256>;

// 1 for the characters of the repertoire, 0 for all others.
ZR_API extern const zr_character_table printableStringCharacterIA5_table;
// The same for visible characters.
ZR_API extern const zr_character_table visibleStringCharacterIA5_table;

// From the character set of C strings to IA5: indexed by the octet as a signed char plus 128; -1 for what IA5 has not.
ZR_API extern const zr_character_table Local2IA5_table;
// From IA5 to the character set of C strings; -1 for what that has not.
ZR_API extern const zr_character_table IA52Local_table;
