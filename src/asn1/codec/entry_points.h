// The direct codec for the type-code interface: any version in the envelope, and exceptions pass through.
#pragma once

#include "asn1/record/record_type.h"

namespace zr {

// encode_record gives the envelope of a structure in a new block. decode_record fills a structure, or leaves it as it
// was and nothing behind. Both return 0 or a status, and throw zr_asn_memexception.
[[nodiscard]] int encode_record(const record_type& type, zr_asn_buffer_t& out, const void* in, int version);
[[nodiscard]] int decode_record(const record_type& type, const zr_asn_buffer_t& in, void* out, int version);

// The same of an INTEGER that is not in a SEQUENCE. One that does not fit 32 bits gives 0, with 275063193.
[[nodiscard]] int encode_integer(zr_asn_buffer_t& out, int32_t value, int version);
[[nodiscard]] int decode_integer(const zr_asn_buffer_t& in, int32_t& value, int version);

}  // namespace zr
