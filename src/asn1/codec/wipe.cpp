#include "asn1/codec/wipe.h"

#include <malloc.h>

#include "asn1/asnbase/buffer.h"

namespace zr {

size_t block_room(void* block) { return block != nullptr ? malloc_usable_size(block) : 0; }

// A text may go on behind a zero octet: only the allocator knows how long its block is.
void wipe_block(void* block) {
    if (block != nullptr) wipe(block, block_room(block));
}

}  // namespace zr
