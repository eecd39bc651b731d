// Texts by words: as many characters at once as a word has octets.
//
// A word is loaded and stored most significant octet first, whatever the machine does, at any address: what stands
// first in the text is on the left. A word falls into lanes of 8, 16 or 32 bits.
#pragma once

#include <cstdint>

#include "asn1/byte_order.h"
#include "asn1/load.h"

namespace zr {

using word = uintptr_t;
constexpr unsigned int word_octets = sizeof(word);
constexpr unsigned int word_bits = 8 * word_octets;

inline word load_word(const unsigned char* at) { return most_significant_first(load<word>(at)); }
inline void store_word(unsigned char* at, word value) { store(at, most_significant_first(value)); }

// One character of 1, 2 or 4 octets.
template <unsigned int Octets>
uint32_t load_unit(const unsigned char* at) {
    if constexpr (Octets == 1) return at[0];
    if constexpr (Octets == 2) return static_cast<uint32_t>(at[0] << 8 | at[1]);
    return static_cast<uint32_t>(at[0]) << 24 | static_cast<uint32_t>(at[1] << 16 | at[2] << 8 | at[3]);
}
template <unsigned int Octets>
[[gnu::always_inline]] inline void store_unit(unsigned char* at, uint32_t value) {
    at[Octets - 1] = static_cast<unsigned char>(value);
    if constexpr (Octets > 1) store_unit<Octets - 1>(at, value >> 8);
}

// The value in each lane of so many bits.
template <unsigned int Lane>
constexpr word in_lanes(word value) {
    return ~word{0} / (~word{0} >> (word_bits - Lane)) * value;
}
template <unsigned int Bits>
constexpr word low_bits = ~word{0} >> (word_bits - Bits);

// The lanes in the right half of a word, each in a lane twice as wide.
template <unsigned int Lane, unsigned int Bits = word_bits / 4>
constexpr word widen(word value) {
    if constexpr (Bits < Lane) {
        return value;
    } else {
        return widen<Lane, Bits / 2>((value | value << Bits) & in_lanes<2 * Bits>(low_bits<Bits>));
    }
}
// The other way: lanes whose left halves are zero, into the right half of the word.
template <unsigned int Lane, unsigned int Bits = Lane / 2>
constexpr word narrow(word value) {
    if constexpr (4 * Bits > word_bits) {
        return value;
    } else {
        return narrow<Lane, 2 * Bits>((value | value >> Bits) & in_lanes<4 * Bits>(low_bits<2 * Bits>));
    }
}

constexpr word ascii_octets = in_lanes<8>(0x7F);
constexpr word high_bits = ~ascii_octets;

// Lanes of numbers below 80 as they are; of greater ones only this is left, that bit 7 is set.
template <unsigned int Lane>
constexpr word cut_to_octets(word value) {
    constexpr word above = in_lanes<Lane>(low_bits<Lane - 1> & ~word{0x7F});
    const word too_large = (((value & above) + above) | value) & in_lanes<Lane>(word{1} << (Lane - 1));
    return (value & in_lanes<Lane>(0x7F)) | too_large >> (Lane - 8);
}

// Of the next characters, which take Lane bits each, a word with Wanted bits for each. Every word that is loaded for it
// goes through `each`, which is to leave no more bits than these.
template <unsigned int Lane, unsigned int Wanted, class Each>
[[gnu::always_inline]] inline word load_characters(const unsigned char* at, Each& each) {
    if constexpr (Lane == Wanted) {
        return each(load_word(at));
    } else {
        const word left = load_characters<Lane, 2 * Wanted>(at, each);
        const word right = load_characters<Lane, 2 * Wanted>(at + word_octets * Lane / Wanted / 2, each);
        return narrow<2 * Wanted>(left) << (word_bits / 2) | narrow<2 * Wanted>(right);
    }
}
// The same; `fit` becomes false, and the word is worth nothing, when a character has more bits.
template <unsigned int Lane, unsigned int Wanted>
[[gnu::always_inline]] inline word load_fitting(const unsigned char* at, bool& fit) {
    word seen = 0;
    const auto see = [&seen](word loaded) {
        seen |= loaded;
        return loaded;
    };
    const word characters = load_characters<Lane, Wanted>(at, see);
    fit = (seen & in_lanes<Lane>(low_bits<Lane> & ~low_bits<Wanted>)) == 0;
    return characters;
}
// The same with an octet for each character, cut to it.
template <unsigned int Lane>
[[gnu::always_inline]] inline word load_octets(const unsigned char* at) {
    constexpr auto cut = [](word loaded) { return cut_to_octets<Lane>(loaded); };
    return load_characters<Lane, 8>(at, cut);
}
template <>
inline word load_octets<8>(const unsigned char* at) {
    return load_word(at);
}

// Stores characters that have Given bits in the word with Lane bits for each.
template <unsigned int Lane, unsigned int Given>
[[gnu::always_inline]] inline void store_characters(unsigned char* at, word value) {
    if constexpr (Lane == Given) {
        store_word(at, value);
    } else {
        store_characters<Lane, 2 * Given>(at, widen<Given>(value >> (word_bits / 2)));
        store_characters<Lane, 2 * Given>(at + word_octets * Lane / Given / 2,
                                          widen<Given>(value & low_bits<word_bits / 2>));
    }
}

// Bit 7 of each octet of a word tells something of it; the other bits tell nothing. The octets must be below 80 in
// these.
constexpr word at_least(word octets, word least) { return octets + in_lanes<8>(0x80 - least); }
constexpr word is_between(word octets, word least, word most) {
    return at_least(octets, least) & ~at_least(octets, most + 1);
}
constexpr word differs(word octets, word from) { return (octets ^ in_lanes<8>(from)) + ascii_octets; }
// How many octets have bit 7 set, the only one that may be.
constexpr unsigned int number_of(word marks) {
    return static_cast<unsigned int>((marks >> 7) * in_lanes<8>(1) >> (word_bits - 8));
}
// How many octets stand to the left of the first whose bit 7 is set; there must be one.
inline unsigned int octets_before(word marks) {
    marks &= high_bits;
    if constexpr (word_octets == 8) return static_cast<unsigned int>(__builtin_clzll(marks)) / 8;
    return static_cast<unsigned int>(__builtin_clz(static_cast<unsigned int>(marks))) / 8;
}

}  // namespace zr

#include "asn1/asnstrng/words_sse2.h"
