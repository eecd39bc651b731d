// Overwriting what was secret.
#pragma once

#include "asn1/export.h"

namespace zr {

// Overwrites all of a block from malloc; null is none.
ZR_CODEC_API void wipe_block(void* block);

}  // namespace zr
