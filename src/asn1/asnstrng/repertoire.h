// Whether a text keeps to a repertoire.
#pragma once

#include "asn1/asnbase/buffer.h"
#include "asn1/asnstrng/code_sets.h"

namespace zr {

inline bool all_in(const zr_r_buffer_t& text, const zr_character_table& repertoire) {
    const unsigned char* octets = text.current();
    for (unsigned int i = 0; i < text.remaining(); ++i)
        if (repertoire[octets[i]] == 0) return false;
    return true;
}

}  // namespace zr
