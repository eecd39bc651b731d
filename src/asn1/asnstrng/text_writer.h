// Writing a text into a buffer, whose room is looked at before octets are written.
#pragma once

#include "asn1/asnbase/buffer.h"

namespace zr {

// text_writer appends to a buffer, whose length is right after finish, reset or an exception only. What is behind that
// length may have been overwritten with zeros.
class text_writer {
public:
    // `expected` octets will probably be put; more or fewer may be.
    text_writer(zr_buffer_t& out, uint64_t expected)
        : out_(out), start_(out.length()), expected_(out.length() + expected), room_(room_in(out)) {}

    bool has_room(size_t octets) const { return octets <= static_cast<size_t>(room_.end - room_.at); }
    // For some octets. May throw zr_asn_memexception; what was put until then stays.
    void make_room(unsigned int octets) {
        if (!has_room(octets)) room_ = grow(out_, room_.at, octets, expected_);
    }
    // The place for the next octets; `end_at` takes those that were written from there on.
    unsigned char* at() const { return room_.at; }
    void end_at(unsigned char* at) { room_.at = at; }

    void finish() { take(out_, room_.at); }
    // Takes back all that was put.
    void reset() {
        finish();
        out_.truncate(start_);
    }

private:
    struct room {
        unsigned char* at;
        unsigned char* end;
    };
    static room room_in(zr_buffer_t& out) {
        unsigned char* at = out.current() + out.length();
        return {at, out.fits(0) ? out.data() + out.capacity() : at};
    }
    // Makes the buffer hold all octets up to `at`.
    static void take(zr_buffer_t& out, const unsigned char* at) {
        out.move_to(out.current(), static_cast<unsigned int>(at - out.current()));
    }
    // Static and with copies: the compiler can keep what the writer is made of in registers.
    static room grow(zr_buffer_t& out, const unsigned char* at, unsigned int octets, uint64_t expected);

    zr_buffer_t& out_;
    unsigned int start_;
    uint64_t expected_;  // length of the buffer at the end
    room room_;
};

}  // namespace zr
