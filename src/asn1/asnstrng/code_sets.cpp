#include "asn1/asnstrng/code_sets.h"

namespace {

// The characters of PrintableString (X.680 41.4) but for the equals sign, which is left out on purpose.
constexpr char printable_characters[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    "abcdefghijklmnopqrstuvwxyz"
    "0123456789"
    " '()+,-./:?";

constexpr zr_character_table repertoire(const char* characters) {
    zr_character_table table{};
    for (; *characters != '\0'; ++characters)
        table[static_cast<unsigned char>(*characters)] = 1;
    return table;
}

// 7-bit characters as they are; `offset` is the index of character 0.
constexpr zr_character_table seven_bits(unsigned int offset) {
    zr_character_table table{};
    for (unsigned int i = 0; i < table.size(); ++i)
        table[i] = i >= offset && i - offset < 0x80 ? static_cast<int32_t>(i - offset) : -1;
    return table;
}

}  // namespace

constexpr zr_character_table printableStringCharacterIA5_table = repertoire(printable_characters);
// VisibleString is held to the printable repertoire too, not to all of 20 to 7E.
constexpr zr_character_table visibleStringCharacterIA5_table = repertoire(printable_characters);
constexpr zr_character_table Local2IA5_table = seven_bits(128);
constexpr zr_character_table IA52Local_table = seven_bits(0);
