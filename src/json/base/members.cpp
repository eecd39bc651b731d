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

integer_range range_of(integer_type type) {
    const unsigned bits = 8u * type.octets - (type.is_signed ? 1 : 0);
    const int64_t most = (int64_t{1} << bits) - 1;
    return {type.is_signed ? -most - 1 : 0, most};
}

// An entry of an array is counted before its value is there, so that it is released in any case.
void* member_filler::add_place() {
    if (!is_list(member_->held)) return place_at(*member_, structure_, member_->held == holding::slots ? count_++ : 0);
    if (count_ == capacity_) {
        const size_t wanted = capacity_ == 0 ? 1 : size_t{capacity_} * 2;
        void* grown = std::realloc(place<void*>(structure_, member_->offset), wanted * member_->place_octets);
        if (grown == nullptr) throw std::bad_alloc();
        place<void*>(structure_, member_->offset) = grown;
        capacity_ = static_cast<uint32_t>(std::min<size_t>(wanted, UINT32_MAX));
    }
    void* made = place_at(*member_, structure_, count_);
    std::memset(made, 0, member_->place_octets);
    store_count(*member_, structure_, ++count_);
    return made;
}

void* member_filler::add_record() {
    void* where = add_place();
    return is_by_pointer(*member_) ? place<void*>(where, 0) = zeroed_block(member_->record->size) : where;
}

void* zeroed_block(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace zr::json
