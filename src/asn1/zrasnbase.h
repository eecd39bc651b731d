// The versioned envelope around every public encoding, and the value objects that records keep their fields in.
#pragma once

#include "asn1/asnbase/composite.h"
#include "asn1/asnbase/octetstring.h"
#include "asn1/zr_asn_buffer.h"

// zr_asnbase is the SEQUENCE that every record is, and the home of the envelope functions.
//
// An envelope is the header 04, version, AC, DC and the complete BER encoding of one object. The first octet says where
// the encoding starts.
class ZR_API zr_asnbase : public zr_asn_sequence {
public:
    explicit zr_asnbase(security_t secure);

    int set_default_value(zr_asn_object* value) override;
    ~zr_asnbase() override;
    // Installs an empty zr_asnbase as the DEFAULT.
    virtual int set_default_value();

    // saveEncoding writes `object` into a new envelope; of `version` the low eight bits count. On success `out` gets a
    // malloc block that the caller releases with zr_asn_buffer_free; what it held before is overwritten, not freed.
    // Otherwise `out` is untouched and the object's status is returned. Exceptions pass through.
    [[nodiscard]] static int saveEncoding(zr_asn_object& object, int version, zr_asn_buffer_t& out);

    // loadObject checks the header and reads `object` from what follows it. 275063190 with the object as it was when
    // the header is missing, of another version, declares no or more octets than there are, or data is null; else the
    // status of asnread. Octets behind the object are not looked at.
    [[nodiscard]] static int loadObject(zr_asn_object& object, int version, zr_asn_buffer_t& in);

    // get_encoded_version answers whether `in` has a header with a version that is not 0: flag 0 and result 0 when it
    // does, flag 1 and 275063190 when not. The number itself is not told.
    [[nodiscard]] static int get_encoded_version(const zr_asn_buffer_t& in, unsigned int& flag);
};

// zr_v37_asnbase is a record whose SEQUENCE begins with a fixed INTEGER 1. The number read is not compared with 1.
class ZR_API zr_v37_asnbase : public zr_asnbase {
public:
    explicit zr_v37_asnbase(security_t secure);
    ~zr_v37_asnbase() override;

protected:
    zr_asn_integer version_;
};

// zrasn_integer is an INTEGER read into any C integer: every get_value returns 0 and truncates silently; 0 stands for
// a value that is absent or does not fit 32 bits.
class ZR_API zrasn_integer : public zr_asn_integer {
public:
    explicit zrasn_integer(security_t secure);

    int set_default_value(zr_asn_object* value) override;
    ~zrasn_integer() override;
    // Makes 0 the DEFAULT.
    virtual int set_default_value();

    using zr_asn_integer::get_value;
    using zr_asn_integer::set_default_value;
    // The low bits that fit, of the signed value.
    int get_value(unsigned long& value);
    int get_value(long& value);
    int get_value(unsigned int& value);
    int get_value(int& value);
    int get_value(unsigned short& value);
    int get_value(unsigned char& value);
};

// zrasn_octetstring is an OCTET STRING that carries a C string (with its terminating zero) or a block of octets. Texts
// and blocks handed out come from malloc; the caller frees them.
class ZR_API zrasn_octetstring : public zr_asn_octetstring {
public:
    explicit zrasn_octetstring(security_t secure);

    int set_default_value(zr_asn_object* value) override;
    ~zrasn_octetstring() override;
    // Makes the one octet 00 the DEFAULT.
    virtual int set_default_value();

    using zr_asn_octetstring::get_value;
    using zr_asn_octetstring::set_default_value;
    using zr_asn_octetstring::set_value;
    // The text forms: zr_set_strvalue and zr_get_strvalue.
    int set_value(unsigned char* text);
    int set_value(char* text);
    int get_value(unsigned char*& text);
    int get_value(char*& text);
    // set_value(c) stores the C string of the one character.
    int set_value(unsigned char c);
    // A copy of the stored octets. Returns 0; 275062885 with null and 0 when memory is out.
    int get_value(unsigned char*& data, unsigned long& length) const;
    // Fills the caller's `count` octets with the stored ones, and with zeros from where these end. Returns 0.
    int get_value(unsigned long count, unsigned char* dest) const;
    // The first stored octet, 0 when there is none. Returns 0.
    int get_value(unsigned char& c) const;
};
