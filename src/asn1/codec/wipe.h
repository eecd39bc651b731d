// Overwriting what was secret.
#pragma once

#include <cstddef>

namespace zr {

// The octets that a block from malloc has; 0 of null.
size_t block_room(void* block);

// Overwrites all of a block from malloc; null is none.
void wipe_block(void* block);

}  // namespace zr
