#include "asn1/codec/wipe.h"

#include <malloc.h>

#include "asn1/asnbase/buffer.h"

namespace zr {

// A text may go on behind a zero octet: only the allocator knows how long its block is.
void wipe_block(void* block) {
    if (block != nullptr) wipe(block, malloc_usable_size(block));
}

}  // namespace zr
