#include "base/limited_output.h"

#include <algorithm>

namespace zr::tool {

limited_output::limited_output(output& to, uint64_t most) : to_(to), left_(most) {
    at_ = block_;
    end_ = block_ + sizeof block_;
}

void limited_output::take(const char* octets, size_t count) {
    flush();
    for (; count > sizeof block_; octets += sizeof block_, count -= sizeof block_) {
        copy(octets, sizeof block_);
        flush();
    }
    copy(octets, count);
}

void limited_output::flush() {
    const char* rest = block_;
    if (rest == at_) return;
    if (static_cast<uint64_t>(at_ - rest) <= left_) {
        rest = at_;
        left_ -= static_cast<uint64_t>(at_ - block_);
    } else {
        // The line of the last octet that may be handed on is completed.
        if (left_ != 0 || within_line_) {
            rest = std::find(block_ + (left_ != 0 ? static_cast<size_t>(left_) - 1 : 0), at_, '\n');
            rest += rest != at_ ? 1 : 0;
        }
        left_ = 0;
        left_out_ += static_cast<uint64_t>(std::count(rest, static_cast<const char*>(at_), '\n'));
    }
    to_.write(block_, static_cast<size_t>(rest - block_));
    if (rest != block_) within_line_ = rest[-1] != '\n';
    at_ = block_;
}

}  // namespace zr::tool
