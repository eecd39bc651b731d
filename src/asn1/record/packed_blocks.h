// Where a packed structure (zr::packed in zrasn/decode.h) has its contents: one block, or a few when it grew.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/export.h"

namespace zr {

// packed_blocks gives out room that is never given back piece by piece.
class ZR_API packed_blocks {
public:
    packed_blocks() = default;
    packed_blocks(packed_blocks&& other) noexcept { *this = static_cast<packed_blocks&&>(other); }
    packed_blocks& operator=(packed_blocks&& other) noexcept;
    packed_blocks(const packed_blocks&) = delete;
    packed_blocks& operator=(const packed_blocks&) = delete;
    ~packed_blocks() { release(); }

    // Room for `octets` octets, or null when memory is out.
    template <size_t Alignment>
    void* allocate(size_t octets) {
        const auto free = static_cast<size_t>(end_ - next_);
        const size_t skipped = (0 - reinterpret_cast<uintptr_t>(next_)) % Alignment;
        if (__builtin_expect(skipped > free || octets > free - skipped, 0)) {
            return add_block(octets) ? allocate<Alignment>(octets) : nullptr;
        }
        unsigned char* const room = next_ + skipped;
        next_ = room + octets;
        return room;
    }

    // Takes all room back. The longest block is kept, or one of `likely` octets is made if it is shorter; memory that
    // is out shows later.
    void start(size_t likely);
    // Takes all room back and keeps the longest block.
    void clear() { start(0); }
    void release();
    // From now on all room is overwritten before it is taken back.
    void keep_secret() { secret_ = true; }

private:
    struct block {
        block* before;
        size_t octets;  // with this header
    };
    bool add_block(size_t octets);
    void give_back(block* last);
    void use(block* chosen);

    block* last_ = nullptr;  // the longest: each is longer than the one before it
    unsigned char* next_ = nullptr;
    unsigned char* end_ = nullptr;
    bool secret_ = false;
};

}  // namespace zr
