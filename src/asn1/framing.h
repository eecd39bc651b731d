// Where an envelope ends, for readers of a socket or a file: without decoding it, and before all of it is there.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/export.h"

namespace zr {

// What octets are that have come so far.
enum class framing : uint8_t {
    complete,    // the envelope is there, with all of its octets
    incomplete,  // what is there may begin an envelope, and more octets are needed
    never,       // it begins none, or one that is longer than permitted
};

// envelope_framing looks at the octets received so far, from the envelope's first one on, and goes on where it stopped
// when there are more: all looks together cost as much as one. It tells lengths only: a complete envelope may hold
// octets that no record has.
class envelope_framing {
public:
    // An envelope of more than `most` octets is none.
    explicit envelope_framing(size_t most) : most_(most) {}

    // `octets` are `length` of them: those of the last look, perhaps at another address, and what has come since.
    ZR_API framing look(const void* octets, size_t length);

    // complete: how many octets the envelope has; there may be more behind it.
    size_t length() const { return next_; }
    // incomplete: at least so many more octets are needed.
    size_t missing() const { return missing_; }

private:
    framing need(size_t until, size_t length);
    framing step(const unsigned char* octets, size_t length);

    size_t most_;
    size_t next_ = 0;     // what lies before it was looked at
    size_t missing_ = 0;  // of the last look
    size_t open_ = 0;     // values of indefinite length that have not ended (X.690 8.1.3.6)
    framing state_ = framing::incomplete;
    bool header_seen_ = false;
};

// envelope_length looks once. `count` becomes the length, or how many more octets are needed at least; 0 for never.
ZR_API framing envelope_length(const void* octets, size_t length, size_t most, size_t& count);

}  // namespace zr
