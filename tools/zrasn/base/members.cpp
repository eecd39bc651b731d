#include "base/members.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace zr::tool {

namespace {

template <class T>
T load(const void* structure, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(structure) + offset, sizeof(T));
    return value;
}

uint32_t stored_count(const field& member, const void* structure) {
    const void* counting = static_cast<const unsigned char*>(structure) + member.count_offset;
    return static_cast<uint32_t>(load_integer(counting, member.count));
}

void store_integer(void* to, integer_type type, int64_t number) {
    switch (type.octets) {  // least significant octet first, as on every x86
        case 1:
            std::memcpy(to, &number, 1);
            break;
        case 2:
            std::memcpy(to, &number, 2);
            break;
        default:
            std::memcpy(to, &number, 4);
    }
}

void* zeroed(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

uint32_t used_places(const field& member, const void* structure) {
    switch (held_of(member)) {
        case holding::list:
        case holding::pointer_list:
            return load<void*>(structure, member.offset) != nullptr ? stored_count(member, structure) : 0;
        case holding::slots: {
            uint32_t count = member.size;
            while (count != 0 && load<void*>(structure, member.offset + (count - 1) * sizeof(void*)) == nullptr)
                --count;
            return count;
        }
        case holding::one:
        case holding::optional:
            break;
    }
    return 1;
}

uint32_t most_places(const field& member) {
    if (held_of(member) == holding::slots) return member.size;
    return member.count.octets == 2 ? UINT16_MAX : UINT32_MAX;
}

const void* value_at(const field& member, const void* structure, uint32_t index) {
    switch (held_of(member)) {
        case holding::one:
            break;
        case holding::optional:
            return load<const void*>(structure, member.offset);
        case holding::list:
            return load<const unsigned char*>(structure, member.offset) + index * member.element_octets();
        case holding::pointer_list:
            return load<const void*>(load<const void*>(structure, member.offset), index * sizeof(void*));
        case holding::slots:
            return load<const void*>(structure, member.offset + index * sizeof(void*));
    }
    return static_cast<const unsigned char*>(structure) + member.offset;
}

uint32_t octets_length(const field& member, const void* structure) {
    if (value_of(member) == value_kind::fixed_octets) return member.size;
    return load<void*>(structure, member.offset) != nullptr ? stored_count(member, structure) : 0;
}

int64_t load_integer(const void* from, integer_type type) {
    switch (type.octets) {
        case 1:
            return type.is_signed ? int64_t{load<int8_t>(from, 0)} : load<uint8_t>(from, 0);
        case 2:
            return type.is_signed ? int64_t{load<int16_t>(from, 0)} : load<uint16_t>(from, 0);
        default:
            return type.is_signed ? int64_t{load<int32_t>(from, 0)} : load<uint32_t>(from, 0);
    }
}

integer_range range_of(integer_type type) {
    const unsigned bits = 8u * type.octets - (type.is_signed ? 1 : 0);
    const int64_t most = (int64_t{1} << bits) - 1;
    return {type.is_signed ? -most - 1 : 0, most};
}

// The place of the next value: the member or slot, or a new and zeroed entry of the array, which is counted at once so
// that it is released in any case.
void* member_filler::new_place() {
    unsigned char* const first = static_cast<unsigned char*>(structure_) + member_->offset;
    const holding held = held_of(*member_);
    if (held == holding::slots) return first + count_++ * sizeof(void*);
    if (held == holding::one || held == holding::optional) return ++count_, first;
    const size_t size = member_->element_octets();
    auto* array = load<unsigned char*>(structure_, member_->offset);
    if (count_ == capacity_) {
        const size_t wanted = capacity_ == 0 ? 1 : size_t{capacity_} * 2;
        array = static_cast<unsigned char*>(std::realloc(array, wanted * size));
        if (array == nullptr) throw std::bad_alloc();
        std::memcpy(first, &array, sizeof(array));
        capacity_ = static_cast<uint32_t>(std::min<size_t>(wanted, UINT32_MAX));
    }
    void* made = array + count_ * size;
    std::memset(made, 0, size);
    store_integer(static_cast<unsigned char*>(structure_) + member_->count_offset, member_->count, ++count_);
    return made;
}

void member_filler::add_integer(int64_t number) { store_integer(new_place(), member_->integer, number); }

char* member_filler::add_text(size_t octets) {
    void* where = new_place();
    char* text = static_cast<char*>(zeroed(octets + 1));
    std::memcpy(where, &text, sizeof(text));
    return text;
}

unsigned char* member_filler::add_octets(uint32_t count) {
    void* where = new_place();
    if (value_of(*member_) == value_kind::fixed_octets) return static_cast<unsigned char*>(where);
    if (count == 0) return nullptr;
    auto* made = static_cast<unsigned char*>(zeroed(count));
    std::memcpy(where, &made, sizeof(made));
    store_integer(static_cast<unsigned char*>(structure_) + member_->count_offset, member_->count, count);
    return made;
}

void* member_filler::add_record() {
    const holding held = held_of(*member_);
    if (held == holding::one || held == holding::list) return new_place();
    void* made = zeroed(record_of(*member_)->size);
    try {
        std::memcpy(new_place(), &made, sizeof(made));
    } catch (...) {
        std::free(made);
        throw;
    }
    return made;
}

}  // namespace zr::tool
