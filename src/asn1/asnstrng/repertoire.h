// Whether a text keeps to the printable repertoire, which is the visible one too.
#pragma once

#include "asn1/asnbase/buffer.h"
#include "asn1/asnstrng/code_sets.h"
#include "asn1/asnstrng/words.h"

namespace zr {

// Marks the octets of a word that are not in the repertoire.
constexpr word not_printable(word octets) {
    const word low = octets & ascii_octets;
    const word in = is_between(low | in_lanes<8>(0x20), 'a', 'z') |     // both cases
                    (is_between(low, '\'', ':') & differs(low, '*')) |  // '()+,-./0123456789:
                    ~(differs(low, ' ') & differs(low, '?'));
    return octets | ~in;
}

inline bool all_printable(const zr_r_buffer_t& text) {
    const unsigned char* at = text.current();
    unsigned int left = text.remaining();
    if (left < word_octets) {
        for (; left != 0; --left)
            if (printableStringCharacterIA5_table[*at++] == 0) return false;
        return true;
    }
    word marks = not_printable(load_word(at + left - word_octets));  // the last, some of them twice
    for (; left > word_octets && (marks & high_bits) == 0; left -= word_octets, at += word_octets)
        marks = not_printable(load_word(at));
    return (marks & high_bits) == 0;
}

}  // namespace zr
