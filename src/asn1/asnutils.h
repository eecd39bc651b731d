// Moving values between C variables and INTEGER or OCTET STRING objects.
#pragma once

#include "asn1/asnbase/octetstring.h"

// zr_set_strvalue stores a C string with its terminating zero: strlen + 1 octets, one zero octet for null. Returns
// zr_asn_octetstring::set_value's status.
ZR_API int zr_set_strvalue(zr_asn_octetstring& object, unsigned char* text);
ZR_API int zr_set_strvalue(zr_asn_octetstring& object, char* text);

// zr_get_strvalue gives a malloc copy of the stored octets, which the caller frees. Fewer than two octets give "". No
// terminating zero is counted on: one octet more than stored is allocated and set to zero. Returns 0; throws
// zr_asn_memexception ("Out of memory get_strvalue()") with `text` null.
ZR_API int zr_get_strvalue(const zr_asn_octetstring& object, unsigned char*& text);
ZR_API int zr_get_strvalue(const zr_asn_octetstring& object, char*& text);

// zr_intvalue gives the value, 0 when there is none that fits 32 bits.
ZR_API long zr_intvalue(zr_asn_integer& object);

// zr_free_strings frees `count` texts (none when it is negative) and then the array. A null array is none.
ZR_API void zr_free_strings(int count, char** strings);
