// Where the pieces of a row of envelopes end.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/framing.h"

namespace zr::python {

// What stands before each envelope: nothing, or its length in 2 or 4 octets.
struct piece_form {
    unsigned prefix;  // octets: 0, 2 or 4
    bool is_little;   // the last octet of the length comes first
};

// One piece, or why there is none.
struct piece {
    framing state;
    size_t begin;    // complete: octets before the envelope, which are the length's
    size_t size;     // complete: of the envelope
    size_t missing;  // incomplete: at least so many more octets are needed
};

// next_piece looks at the octets from one piece on.
inline piece next_piece(const unsigned char* octets, size_t size, piece_form form) {
    if (form.prefix == 0) {
        size_t count = 0;
        const framing state = envelope_length(octets, size, UINT32_MAX, count);
        return state == framing::complete ? piece{state, 0, count, 0} : piece{state, 0, 0, count};
    }
    if (size < form.prefix) return {framing::incomplete, 0, 0, form.prefix - size};
    size_t length = 0;
    for (unsigned i = 0; i < form.prefix; ++i)
        length = length << 8 | octets[form.is_little ? form.prefix - 1 - i : i];
    if (size - form.prefix < length) return {framing::incomplete, 0, 0, length - (size - form.prefix)};
    return {framing::complete, form.prefix, length, 0};
}

}  // namespace zr::python
