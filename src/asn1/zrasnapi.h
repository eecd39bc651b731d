// Public buffers, the test of an encoding's version, and the interface that names a record by a number.
#pragma once

#include <cstdint>

#include "asn1/export.h"
#include "asn1/zr_asn_buffer.h"

// What a type code says about the value behind the untyped pointer. There are no others.
enum zrasn_type_code : unsigned int {
    zrasn_type_cert_request = 259,  // cert_request_in (asn1/asn_yvobjs.h)
    zrasn_type_update_list = 260,   // yvobj_update_list_s_t (asn1/asn_yvobjs.h)
    zrasn_type_integer = 262,       // zrasn_integer_value: a bare INTEGER in the envelope, not a SEQUENCE
};

// The value of zrasn_type_integer: 32 bits also where `long` has 64.
using zrasn_integer_value = int32_t;

// The type-code interface. `value` points at the C value that `type` names; of `version`, the one in the envelope, the
// low eight bits count. All return -1 for an unknown type code and do nothing then; else 0 or a status of
// asn1/status.h. No exception leaves them: a zr_asn_exception is reported to standard error and its code
// returned, any other becomes 275062885 without a word. Texts are not converted.

// zrasn_encode_obj gives the encoding in a new block, which the caller releases with zr_asn_buffer_free. What `out`
// held before is overwritten, not freed; it is untouched when the status is not 0.
[[nodiscard]] ZR_API int zrasn_encode_obj(int version, void* value, unsigned int type, zr_asn_buffer_t& out);

// zrasn_decode_obj fills the value; zrasn_obj_free releases what it allocated. When memory ends (275062885) the value
// is all zero, otherwise a refused value is, octet for octet, as the caller gave it; only an INTEGER that does not fit
// 32 bits is stored as 0, with 275063193. A failed call leaves no block behind. Mind the order of the parameters.
[[nodiscard]] ZR_API int zrasn_decode_obj(int version, zr_asn_buffer_t& in, unsigned int type, void* value);

// zrasn_obj_free releases what a decode allocated inside the value, not the value itself, and leaves pointers null and
// counts 0. `version` is not used. Returns 0.
ZR_API int zrasn_obj_free(int version, unsigned int type, void* value);

// zrasn_version answers whether `in` has an envelope header with a version that is not 0: flag 0 and result 0 when it
// does, flag 1 and 275063190 when not.
[[nodiscard]] ZR_API int zrasn_version(const zr_asn_buffer_t& in, unsigned int& flag);

// zr_asn_buffer_free releases the block of `buffer` when there is one. Neither field is reset: do not free it twice.
ZR_API void zr_asn_buffer_free(zr_asn_buffer_t& buffer);

// zr_asn_buffer_wipe overwrites the octets of `buffer`, for an encoding that holds a secret, before it is freed.
ZR_API void zr_asn_buffer_wipe(zr_asn_buffer_t& buffer);

// zr_asn_buffer_copy makes `dst` a malloc copy of `src`, which the caller releases with zr_asn_buffer_free. What `dst`
// held before is overwritten, not freed. An empty or null source gives an empty copy. `status` gets 0, or 275062885
// when memory is out; dst.data is null then while dst.length is the source's.
ZR_API void zr_asn_buffer_copy(const zr_asn_buffer_t& src, zr_asn_buffer_t& dst, unsigned int& status);
