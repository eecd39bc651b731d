// Files of more than one envelope.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "base/library.h"
#include "input/input.h"

namespace zr::tool {

// How the envelopes of an input follow each other: --framing.
struct framing_form {
    enum class kind : uint8_t { automatic, one, concatenated, prefixed };
    kind how = kind::automatic;
    unsigned length_octets = 0;    // prefixed: of the length before each envelope, 2 or 4
    bool low_octet_first = false;  // of that length
};

// The form in which the octets are: prefixed, if the length before the first envelope is that envelope's; concatenated,
// if another envelope's header stands behind the first one; else one.
framing_form recognise_framing(const unsigned char* data, size_t size);

// What for_each_envelope has met.
struct envelope_count {
    uint64_t envelopes = 0;
    bool is_stream = false;  // they were told apart by the framing
    std::string problem;     // "FILE:OFFSET: what" ended it before the input did; empty when nothing did
};

// for_each_envelope visits each of an input, one after the other: an input that is no stream as it is, and the others
// under labels of their own, with offsets that count from their first octet. Octets that were visited may leave memory.
envelope_count for_each_envelope(const octets_input& in, const framing_form& told,
                                 const std::function<void(const octets_input&)>& visit);

}  // namespace zr::tool
