// Overwriting what was secret.
#pragma once

namespace zr {

// Overwrites all of a block from malloc; null is none.
void wipe_block(void* block);

}  // namespace zr
