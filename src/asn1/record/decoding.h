// Decoding octets from outside: options, limits, and a report of what was found. Nothing is ever printed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/envelope.h"
#include "asn1/record/refusal.h"
#include "asn1/status_text.h"

namespace zr {

// What a decode may be limited in.
enum class decode_limit : uint8_t {
    none,
    octets,    // of the envelope
    heap,      // octets of the blocks of the structure, where a text or byte string counts with its header
    elements,  // of all lists together, empty slots among them
    depth,     // records that enclose each other
};

// The most that a decode may take. What passes one of them ends with 275062885.
struct decode_limits {
    size_t octets = UINT32_MAX;  // of the envelope
    size_t heap = SIZE_MAX;      // octets in blocks
    size_t elements = SIZE_MAX;  // of all lists together
    size_t depth = SIZE_MAX;     // records that enclose each other

    // The number that a limit is.
    size_t most(decode_limit limit) const {
        switch (limit) {
            case decode_limit::octets:
                return octets;
            case decode_limit::heap:
                return heap;
            case decode_limit::elements:
                return elements;
            case decode_limit::depth:
                return depth;
            case decode_limit::none:
                break;
        }
        return SIZE_MAX;
    }
};

// What a decode is asked for.
struct decode_options {
    // Refuses all that the library would not write: octets behind the record, other forms of lengths and values, texts
    // with a zero octet or not in UTF-8, integers beyond their member. What is accepted, an encode gives back octet for
    // octet.
    bool strict = false;
    // Gives texts in the thread's local code set, as the entry points whose names end in LCS do.
    bool local_texts = false;
    int version = envelope_version;  // of the envelope; the low eight bits count
    decode_limits limits;            // none is set
};

// What a decode tells besides the structure. Offsets count from the envelope's first octet. Where the status is 0 only
// `status` and `consumed` mean anything.
struct decode_report : refusal {
    size_t consumed = 0;  // octets of the envelope that was decoded; what follows was not looked at
    size_t missing = 0;   // the octets end early: at least so many more are needed; else 0
    decode_limit passed = decode_limit::none;  // the limit that ended it, with status 275062885
    int found = -1;                            // the octet at the offset; -1 behind the last one

    // The name of the status, such as "zr_err_no_match".
    const char* name() const { return status_name(status); }
    // Why, as a key that never changes: docs/api.md lists those that say more than the key of the status.
    ZR_API const char* reason() const;
    // As at the start.
    void clear() {
        refusal::clear();
        consumed = missing = 0;
        passed = decode_limit::none;
        found = -1;
    }
};

}  // namespace zr
