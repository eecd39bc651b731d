// Overwriting what was secret.
#pragma once

#include <cstddef>

#include "asn1/export.h"

namespace zr {

// The octets that a block from malloc has; 0 of null.
size_t block_room(void* block);

// Overwrites all of a block from malloc; null is none.
ZR_CODEC_API void wipe_block(void* block);

}  // namespace zr
