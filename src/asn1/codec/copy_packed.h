// Copying a structure without a word on standard error: into packed blocks, or into blocks from malloc.
#pragma once

#include "asn1/record/packed_blocks.h"
#include "asn1/record/record_type.h"

namespace zr {

// `to` is zero. Throws zr_asn_memexception; `to` is then of no use.
void copy_packed(const record_type& type, const void* from, void* to, packed_blocks& blocks);

// Makes `to`, whatever it held, a copy with blocks of its own. False, with `to` all zero, when there is no memory or an
// array of pointers has a null element.
[[nodiscard]] bool copy_quietly(const record_type& type, const void* from, void* to);

}  // namespace zr
