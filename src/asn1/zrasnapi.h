// Public buffers, and the test of an encoding's version.
#pragma once

#include "asn1/export.h"
#include "asn1/zr_asn_buffer.h"

// zrasn_version answers whether `in` has an envelope header with a version that is not 0: flag 0 and result 0 when it
// does, flag 1 and 275063190 when not.
ZR_API int zrasn_version(const zr_asn_buffer_t& in, unsigned int& flag);

// zr_asn_buffer_free releases the block of `buffer` when there is one. Neither field is reset: do not free it twice.
ZR_API void zr_asn_buffer_free(zr_asn_buffer_t& buffer);

// zr_asn_buffer_copy makes `dst` a malloc copy of `src`, which the caller releases with zr_asn_buffer_free. What `dst`
// held before is overwritten, not freed. An empty or null source gives an empty copy. `status` gets 0, or 275062885
// when memory is out; dst.data is null then while dst.length is the source's.
ZR_API void zr_asn_buffer_copy(const zr_asn_buffer_t& src, zr_asn_buffer_t& dst, unsigned int& status);
