// Reading and writing a text octet by octet.
#pragma once

#include <algorithm>

#include "asn1/asnbase/buffer.h"

namespace zr {

// octet_reader gives the octets at a cursor, and its fill octet behind the last.
class octet_reader {
public:
    explicit octet_reader(const zr_r_buffer_t& in)
        : next_(in.current()), end_(in.current() + in.remaining()), fill_(in.fill_octet()) {}
    bool at_end() const { return next_ == end_; }
    unsigned char next() { return next_ != end_ ? *next_++ : fill_; }

private:
    const unsigned char* next_;
    const unsigned char* end_;
    unsigned char fill_;
};

// text_writer appends to a buffer, which it lets grow by half so that long texts are moved a few times only.
class text_writer {
public:
    explicit text_writer(zr_buffer_t& out) : out_(out), start_(out.length()) {}
    // Appends the low eight bits.
    void put(uint32_t octet) {
        if (!out_.fits(1)) out_.make_room(1, step());
        out_.append(octet);
    }
    // Takes back all that was put.
    void reset() { out_.truncate(start_); }

private:
    unsigned int step() const {
        // Up to 2^32-1 octets; the buffer adds less than 1024 of its own accord.
        const unsigned int spare = UINT32_MAX - 1024 - std::min<unsigned int>(out_.capacity(), UINT32_MAX - 1024);
        return std::max(64u, std::min(out_.capacity() / 2, spare));
    }

    zr_buffer_t& out_;
    unsigned int start_;
};

}  // namespace zr
