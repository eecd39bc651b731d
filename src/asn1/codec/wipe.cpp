#include "asn1/codec/wipe.h"

#include "asn1/asnbase/buffer.h"
#include "asn1/platform.h"

namespace zr {

size_t block_room(void* block) { return block != nullptr ? allocated_octets(block) : 0; }

// A text may go on behind a zero octet: only the allocator knows how long its block is.
void wipe_block(void* block) {
    if (block != nullptr) wipe(block, block_room(block));
}

}  // namespace zr
