// OCTET STRING, the base of the character strings.
#pragma once

#include "asn1/asnbase/primitive.h"

// zr_asn_octetstring is OCTET STRING (X.690 8.7): primitive, or constructed of segments nested to any depth, with
// definite or indefinite length.
//
// The contents octets are the object's encoding cache itself. set_value makes it valid; decoding does not, so an OCTET
// STRING that was only decoded is written with empty contents, and whatever makes the cache stale loses the contents.
// Kept so: set a value before writing.
class ZR_API zr_asn_octetstring : public zr_asn_primitive {
public:
    explicit zr_asn_octetstring(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int set_default_value(zr_asn_object* value) override;
    ~zr_asn_octetstring() override;
    void set_secure(security_t secure) override;

    // set_value takes a copy of `len` octets.
    int set_value(const unsigned char* data, unsigned int len);
    // get_value points at the contents, which the object owns; after decoding a zero octet follows them. 275063200 when
    // absent without a default.
    int get_value(unsigned char*& data, unsigned int& len) const;
    // set_default_value makes a copy of such octets the DEFAULT.
    int set_default_value(const unsigned char* data, unsigned int len);

protected:
    zr_buffer_t second_;  // the text of character strings (asn1/asnstrng.h); unused here
    security_t mode_;
};

namespace zr {

// segment_sink is told what walk_segments meets. A status other than 0 ends the walk.
class segment_sink {
public:
    // A segment begins, before anything of it is read.
    virtual int on_begin() { return 0; }
    // It is constructed: segments of its own follow.
    virtual int on_open() { return 0; }
    // It is primitive, with these contents.
    virtual int on_segment(const unsigned char* octets, unsigned int len) = 0;
    // A constructed segment, or the whole string, has no more segments.
    virtual int on_close(bool /*outermost*/) { return 0; }
    // A segment of the whole string is complete, with the end-of-contents octets that it may have.
    virtual void on_complete() {}

protected:
    ~segment_sink() = default;
};

// walk_segments reads the segments of a constructed string (X.690 8.6.4, 8.7.3), which nest to any depth: it keeps the
// open levels on the heap, 12 octets for each. `tag` is the universal tag that each segment must carry.
//
// `input` stands at the first contents octet of the outermost string, whose length is `len`, or indefinite. Returns 0
// with `input` behind the contents (before the end-of-contents octets of an indefinite length), or the first failure
// with `input` as it was. Throws zr_asn_memexception when memory ends.
int walk_segments(zr_r_buffer_t& input, bool indefinite, unsigned int len, unsigned int tag, segment_sink& sink);

}  // namespace zr
