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
    while (block* before = last_->before) {
        last_->before = before->before;
        std::free(before);
    }
    use(last_);
}

void packed_blocks::wipe() {
    for (block* each = last_; each != nullptr; each = each->before)
        zr::wipe(each + 1, each->octets - sizeof(block));
    clear();
}

void packed_blocks::release() {
    while (last_ != nullptr) {
        block* const before = last_->before;
        std::free(last_);
        last_ = before;
    }
    next_ = end_ = nullptr;
}

}  // namespace zr
