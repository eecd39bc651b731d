// The value object of text fields.
#pragma once

#include "asn1/asnstrng/string_types.h"

// zrasnUTF8String is a UTF8String (X.690 8.21) that carries a C string, stored without its terminating zero. In the
// mode zr_local_code_set, the object's mode at the time of the call, texts are taken and given in the local code set
// (zrz/zrz.h), otherwise in UTF-8, which is not checked.
class ZR_API zrasnUTF8String : public zr_asn_UTF8String {
public:
    explicit zrasnUTF8String(security_t secure);

    int set_default_value(zr_asn_object* value) override;
    ~zrasnUTF8String() override;

    using zr_asn_octetstring::get_value;
    using zr_asn_octetstring::set_default_value;
    using zr_asn_octetstring::set_value;
    // set_value stores a text; null counts as empty. Throws zr_asn_memexception, and zr_asn_exception (275063211) for a
    // text in the local code set that has no form in UTF-8.
    virtual int set_value(char* text);
    virtual int set_value(unsigned char* text);
    // get_value gives a malloc copy of the stored octets with a terminating zero, which the caller frees; "" when the
    // value is absent. Returns 0, or 275062885 with `text` null when memory ends. Throws zr_asn_exception (275063211)
    // for a text that has no form in the local code set, and zr_asn_memexception when memory ends in its conversion.
    virtual int get_value(char*& text);
    virtual int get_value(unsigned char*& text);
    // Makes the empty text the DEFAULT.
    virtual int set_default_value();
};
