// BIT STRING, and BIT STRING with named bits.
#pragma once

#include "asn1/asnbase/primitive.h"

// zr_asn_bitstring is BIT STRING (X.690 8.6): primitive, or constructed of segments nested to any depth, with definite
// or indefinite length. The first bit is the most significant of the first octet.
//
// The first contents octet is bits_field. BER means by it how many bits of the last octet are unused; so do decoding
// and zr_asn_namedbits. set_value stores, and get_value expects, how many are used there, 0 for all eight. Kept so: a
// value set with 10 bits is written with 02, and one read with 6 unused bits is reported with 6 bits in its last octet.
// In the constructed form each level counts the bits of its segments as get_value reports them.
class ZR_API zr_asn_bitstring : public zr_asn_primitive {
public:
    explicit zr_asn_bitstring(security_t secure);

    // 275063202 for contents without the first octet, with one above 7, or with unused bits but no octet; also for a
    // constructed form without a segment. 275063203 when a segment before the last leaves bits_field other than 0.
    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int set_default_value(zr_asn_object* value) override;
    ~zr_asn_bitstring() override;
    void set_secure(security_t secure) override;

    // set_value copies `nbits` bits; what follows them in their last octet is cleared.
    int set_value(const unsigned char* data, unsigned int nbits);
    // get_value points at the octets, which the object owns; 275063200 when absent without a default.
    int get_value(unsigned char*& data, unsigned int& nbits) const;
    // set_default_value makes a copy of such bits the DEFAULT.
    int set_default_value(const unsigned char* data, unsigned int nbits);

protected:
    // read_bit gives bit `n`, 0 beyond the octets, the default's when absent.
    int read_bit(unsigned int n, int& value) const;

    mutable zr_buffer_t octets_;  // writing a zr_asn_namedbits trims these two
    security_t mode_;
    mutable uint8_t bits_field_ = 0;
};

// zr_asn_namedbits is a BIT STRING whose bits are addressed by number. Trailing zero bits have no meaning (X.680 22.7)
// and are not written.
class ZR_API zr_asn_namedbits : public zr_asn_bitstring {
public:
    using zr_asn_bitstring::zr_asn_bitstring;

    ~zr_asn_namedbits() override;
    // Trims trailing zero octets, then counts the unused bits of the last octet. Two are counted as one: kept so.
    int asnwrite(zr_buffer_t& output) const override;

    // set_bit makes the value present. Clearing a bit beyond the octets adds none.
    int set_bit(unsigned int n, int value);
    // 275063200 when absent without a default.
    int get_bit(unsigned int n, int& value) const;
};
