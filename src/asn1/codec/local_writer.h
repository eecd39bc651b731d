// Writing texts of the local code set as UTF-8, each where it is come to.
#pragma once

#include "asn1/ascii.h"
#include "asn1/codec/writer.h"
#include "asn1/export.h"

namespace zr {

class text_conversion;

// What the writers of one encoding share.
struct local_writing {
    text_conversion& conversion;
    bool keeps_ascii;    // ASCII texts stay as they are
    uint64_t spare = 0;  // octets of the block that were not asked for
};

// Ends a writing for which the block turns out too short.
struct local_room_ended {};

// Writes a text before `at` and returns where it begins. Throws local_room_ended, what the conversion throws, and
// zr_asn_memexception.
ZR_CODEC_API unsigned char* write_converted_text(unsigned char* at, const char* text, size_t length,
                                                 local_writing& shared);

// local_writer is a writer that converts texts. Room is asked for their octets in the local code set: what a text is
// longer in UTF-8 comes out of the room that nobody asked for.
class local_writer : public writer {
public:
    local_writer(unsigned char* end, unsigned char* limit, local_writing& shared)
        : writer(end, limit), shared_(&shared) {}

    bool room(uint64_t octets) {
        if (!writer::room(octets)) return false;
        shared_->spare = left() - octets;
        return true;
    }
    ZR_INLINE void string(unsigned char identifier, const void* contents, size_t length) {
        if (identifier != id_utf8_string || is_kept(contents, length)) {
            writer::string(identifier, contents, length);
        } else {
            convert(contents, length);
        }
    }
    ZR_INLINE void list_text(const char* text, size_t length) {
        if (is_kept(text, length)) {
            writer::list_text(text, length);
        } else {
            convert(text, length);
        }
    }

private:
    bool is_kept(const void* text, size_t length) const { return shared_->keeps_ascii && is_ascii(text, length); }
    void convert(const void* text, size_t length) {
        go_on(write_converted_text(start(), static_cast<const char*>(text), length, *shared_));
    }

    local_writing* shared_;
};

}  // namespace zr
