#include "json/base/text_output.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace zr::json {

text_output::~text_output() { std::free(begin_); }

// The window is the rest of the block.
void text_output::grow(size_t wanted) {
    const size_t used = size();
    auto* grown = static_cast<char*>(std::realloc(begin_, wanted));
    if (grown == nullptr) throw std::bad_alloc();
    begin_ = grown;
    at_ = grown + used;
    end_ = grown + wanted;
}

void text_output::take(const char* octets, size_t count) {
    constexpr size_t least = 512;
    const size_t used = size();
    if (count > most_ - std::min(used, most_)) throw text_too_long{};
    const size_t needed = used + count;
    grow(std::min(std::max({least, needed, used <= SIZE_MAX / 2 ? 2 * used : SIZE_MAX}), std::max(most_, needed)));
    copy(octets, count);
}

char* text_output::release() {
    grow(size() + 1);
    *at_ = '\0';
    char* const block = begin_;
    begin_ = at_ = end_ = nullptr;
    return block;
}

}  // namespace zr::json
