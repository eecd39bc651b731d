#include "json/base/members.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace zr::json {

int64_t number_at(const void* from, integer_type type) {
    const int32_t bits = load_integer(from, type);
    return type.is_signed ? int64_t{bits} : static_cast<uint32_t>(bits);
}

// An entry of an array is counted before its value is there, so that it is released in any case.
void* member_filler::add_entry() {
    if (count_ == capacity_) grow();
    void* made = place_at(*member_, structure_, count_);
    std::memset(made, 0, member_->place_octets);
    store_count(*member_, structure_, ++count_);
    return made;
}

void member_filler::grow() {
    constexpr size_t least_block = 24;  // what malloc gives for less
    const size_t wanted = std::max(size_t{capacity_} * 2, std::max<size_t>(least_block / member_->place_octets, 1));
    void* grown = std::realloc(place<void*>(structure_, member_->offset), wanted * member_->place_octets);
    if (grown == nullptr) throw std::bad_alloc();
    place<void*>(structure_, member_->offset) = grown;
    capacity_ = static_cast<uint32_t>(std::min<size_t>(wanted, UINT32_MAX));
}

void* zeroed_block(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace zr::json
