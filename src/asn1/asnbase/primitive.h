// The leaves of the object tree but for strings: INTEGER, BOOLEAN, NULL and a placeholder.
#pragma once

#include "asn1/asnbase/object.h"

// zr_asn_primitive is what all leaves have in common.
class ZR_API zr_asn_primitive : public zr_asn_object {
public:
    explicit zr_asn_primitive(security_t secure) : zr_asn_object(secure) {}

    int decode_value(zr_r_buffer_t& input, unsigned int len) override = 0;
    int encode_value(zr_buffer_t& output) const override = 0;
};

// zr_asn_integer is INTEGER (X.690 8.3). Values are 32 bits wide on every platform; contents of any length are kept.
//
// The contents octets are the object's encoding cache itself. set_value does not mark enclosing caches stale, and what
// makes the cache stale afterwards (set_tag on an object whose encoding is valid, for instance) loses the contents:
// tags are set before values.
class ZR_API zr_asn_integer : public zr_asn_primitive {
public:
    explicit zr_asn_integer(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int set_default_value(zr_asn_object* value) override;
    ~zr_asn_integer() override;
    void set_secure(security_t secure) override;

    // set_value takes a value of 32 bits, signed or unsigned: 0xFFFFFFFF is the same as -1. A long that is neither is
    // refused with 275063193 and changes nothing. The octet form takes contents as they stand.
    int set_value(long value);
    int set_value(const unsigned char* octets, unsigned int len);
    // get_value gives the value, the default's when absent; 275063200 without either, 275063193 when the contents do
    // not fit. The octet form points at the contents, which the object owns.
    int get_value(long& value) const;
    int get_value(unsigned char*& octets, unsigned int& len) const;
    // set_default_value makes such a value the DEFAULT.
    int set_default_value(long value);
    // A literal 0 is a number too, not a null pointer.
    int set_default_value(int value) { return set_default_value(static_cast<long>(value)); }
    int set_default_value(unsigned int value) { return set_default_value(static_cast<long>(value)); }
    int set_default_value(unsigned long value) { return set_default_value(static_cast<long>(value)); }
    int set_default_value(long long value) { return set_default_value(static_cast<long>(value)); }
    int set_default_value(unsigned long long value) { return set_default_value(static_cast<long>(value)); }
    int set_default_value(const unsigned char* octets, unsigned int len);

    // update_int_val recomputes the cached value from the contents. More than four octets that begin with 00 are
    // accepted, and the leading ones fold into the low bits: kept so.
    void update_int_val();

private:
    int32_t value_ = 0;
    zr_buffer_t second_;
    security_t mode_;
    int exact_ = 0;
};

// zr_asn_boolean is BOOLEAN (X.690 8.2): any octet but 00 reads as TRUE, TRUE is written as FF.
class ZR_API zr_asn_boolean : public zr_asn_primitive {
public:
    explicit zr_asn_boolean(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int set_default_value(zr_asn_object* value) override;
    ~zr_asn_boolean() override;

    // set_value takes 0 for false, anything else for true.
    int set_value(int value);
    // 275063200 when absent without a default.
    int get_value(int& value) const;
    // set_default_value makes such a value the DEFAULT.
    int set_default_value(int value);

private:
    int value_ = 0;
};

// zr_asn_null is NULL (X.690 8.8). It is always present.
class ZR_API zr_asn_null : public zr_asn_primitive {
public:
    explicit zr_asn_null(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int is_valid(int deep) const override;
    int is_present() const override;
    ~zr_asn_null() override;
};

// zr_asn_nothing fills a place in a composite that has no encoding: it reads and writes no octets.
class ZR_API zr_asn_nothing : public zr_asn_primitive {
public:
    explicit zr_asn_nothing(security_t secure);

    int decode_value(zr_r_buffer_t& input, unsigned int len) override;
    int encode_value(zr_buffer_t& output) const override;
    int is_valid(int deep) const override;
    int is_present() const override;
    ~zr_asn_nothing() override;
    int asnread(zr_r_buffer_t& input) override;
    int asnwrite(zr_buffer_t& output) const override;
};
