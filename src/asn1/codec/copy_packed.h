// Copying a structure into packed blocks.
#pragma once

#include "asn1/record/packed_blocks.h"
#include "asn1/record/record_type.h"

namespace zr {

// `to` is zero. Throws zr_asn_memexception; `to` is then of no use.
void copy_packed(const record_type& type, const void* from, void* to, packed_blocks& blocks);

}  // namespace zr
