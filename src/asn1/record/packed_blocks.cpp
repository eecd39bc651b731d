#include "asn1/record/packed_blocks.h"

#include <algorithm>
#include <cstdlib>

#include "asn1/asnbase/buffer.h"

namespace zr {

packed_blocks& packed_blocks::operator=(packed_blocks&& other) noexcept {
    if (this == &other) return *this;
    release();
    last_ = other.last_;
    next_ = other.next_;
    end_ = other.end_;
    secret_ = other.secret_;
    other.last_ = nullptr;
    other.next_ = other.end_ = nullptr;
    return *this;
}

void packed_blocks::use(block* chosen) {
    last_ = chosen;
    next_ = reinterpret_cast<unsigned char*>(chosen + 1);
    end_ = reinterpret_cast<unsigned char*>(chosen) + chosen->octets;
}

// A block twice as long as the last, at least.
bool packed_blocks::add_block(size_t octets) {
    constexpr size_t beside = sizeof(block) + alignof(std::max_align_t);
    if (octets > SIZE_MAX / 4) return false;
    const size_t all = std::max(octets + beside, last_ != nullptr ? last_->octets * 2 : 0);
    auto* made = static_cast<block*>(std::malloc(all));
    if (made == nullptr) return false;
    *made = {last_, all};
    use(made);
    return true;
}

void packed_blocks::start(size_t likely) {
    if (last_ != nullptr && last_->octets - sizeof(block) < likely) release();
    if (last_ == nullptr) {
        if (likely != 0) static_cast<void>(add_block(likely));
        return;
    }
    give_back(last_->before);
    last_->before = nullptr;
    if (secret_) wipe(last_ + 1, last_->octets - sizeof(block));
    use(last_);
}

void packed_blocks::release() {
    give_back(last_);
    last_ = nullptr;
    next_ = end_ = nullptr;
}

// Frees a block and those before it.
void packed_blocks::give_back(block* last) {
    while (last != nullptr) {
        block* const before = last->before;
        if (secret_) wipe(last, last->octets);
        std::free(last);
        last = before;
    }
}

}  // namespace zr
