// What the program does with the members of a structure beyond asn1/record/members.h: numbers of any width, and making
// room in a structure for one value after the other.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/record/members.h"
#include "asn1/record/registry.h"

namespace zr::json {

// Whether the values are the elements of a SEQUENCE OF.
inline bool is_sequence_of(const field& member) { return is_list(member.held) || member.held == holding::slots; }

// Whether the values are texts in C.
inline bool is_text(const field& member) {
    return member.value == value_kind::text || member.value == value_kind::stored_text;
}

// The most that a list or slots can hold.
inline uint32_t most_places(const field& member) {
    return member.held == holding::slots ? member.size : most_count(member);
}

// The number that an integer is.
int64_t number_at(const void* from, integer_type type);
// The numbers that a type has.
struct integer_range {
    int64_t least;
    int64_t most;
};
inline integer_range range_of(integer_type type) {
    const unsigned bits = 8u * type.octets - (type.is_signed ? 1 : 0);
    const int64_t most = (int64_t{1} << bits) - 1;
    return {type.is_signed ? -most - 1 : 0, most};
}

// A zeroed block from malloc. Throws std::bad_alloc.
void* zeroed_block(size_t octets);

// member_filler makes room for the values of one member of a zeroed structure, in order. What it makes belongs to the
// structure, whose free function releases it at any time. All throw std::bad_alloc.
class member_filler {
public:
    member_filler() = default;
    member_filler(const field& member, void* structure) : member_(&member), structure_(structure) {}

    const field& member() const { return *member_; }
    void* structure() const { return structure_; }

    // The place of the next value, all zero: the member or slot, or a new entry of the array, which is counted at once.
    void* add_place() {
        if (is_list(member_->held)) return add_entry();
        return place_at(*member_, structure_, member_->held == holding::slots ? count_++ : 0);
    }
    // The structure of a record, all zero.
    void* add_record() {
        void* where = add_place();
        return is_by_pointer(*member_) ? place<void*>(where, 0) = zeroed_block(member_->record->size) : where;
    }
    // A slot that stays empty, or a value that stays absent.
    void add_nothing() { ++count_; }
    // Values so far, in a list or slots.
    uint32_t count() const { return count_; }

private:
    // Of the array of a list.
    void* add_entry();
    void grow();

    const field* member_ = nullptr;
    void* structure_ = nullptr;
    uint32_t count_ = 0;
    uint32_t capacity_ = 0;  // values that the array of a list has room for
};

}  // namespace zr::json
