// From a field and a structure to the values that the structure holds: the one place of the program that knows how the
// library describes members and lays them out.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/record/registry.h"

namespace zr::tool {

// What one value of a field is.
enum class value_kind : uint8_t { integer, text, octets, fixed_octets, record };

// How a structure holds the values: one, one or none, in an array with a count, each behind a pointer of such an array,
// or each behind one of a fixed number of pointers.
enum class holding : uint8_t { one, optional, list, pointer_list, slots };

// Of each kind of field that the library knows.
inline value_kind value_of(const field& member) {
    static constexpr value_kind values[] = {value_kind::integer,      value_kind::text,   value_kind::octets,
                                            value_kind::fixed_octets, value_kind::record, value_kind::record,
                                            value_kind::record,       value_kind::record, value_kind::text,
                                            value_kind::integer,      value_kind::record};
    return values[static_cast<size_t>(member.kind)];
}
inline holding held_of(const field& member) {
    static constexpr holding ways[] = {holding::one,  holding::one,      holding::one,  holding::one,
                                       holding::one,  holding::optional, holding::list, holding::pointer_list,
                                       holding::list, holding::list,     holding::slots};
    return ways[static_cast<size_t>(member.kind)];
}
// The record of the values of the kind record, or null.
inline const record_type* record_of(const field& member) { return member.nested; }

// Whether the values are the elements of a SEQUENCE OF.
inline bool is_sequence_of(const field& member) {
    const holding held = held_of(member);
    return held == holding::list || held == holding::pointer_list || held == holding::slots;
}

// How many values the structure holds: of slots up to the last that is used, of one that may be absent 1.
uint32_t used_places(const field& member, const void* structure);
// The most that a list or slots can hold.
uint32_t most_places(const field& member);
// Value `index`, of which used_places tells how many there are: the integer, the pointer to the text, the pointer to
// the octets, the fixed octets, or the record's structure, which is null when it is absent or the slot is empty.
const void* value_at(const field& member, const void* structure, uint32_t index);
// The length of octets.
uint32_t octets_length(const field& member, const void* structure);

// The number that an integer is.
int64_t load_integer(const void* from, integer_type type);
// The numbers that a type has.
struct integer_range {
    int64_t least;
    int64_t most;
};
integer_range range_of(integer_type type);

// member_filler puts values into one member of a zeroed structure, in order. What it makes belongs to the structure,
// whose free function releases it at any time. All throw std::bad_alloc.
class member_filler {
public:
    member_filler() = default;
    member_filler(const field& member, void* structure) : member_(&member), structure_(structure) {}

    // The number must be one of the type.
    void add_integer(int64_t number);
    // Room for a text of so many octets: their end is there already.
    char* add_text(size_t octets);
    // Room for octets, all zero: of fixed ones as many as there are.
    unsigned char* add_octets(uint32_t count);
    // The structure of a record, all zero.
    void* add_record();
    // A slot that stays empty, or a record that stays absent.
    void add_nothing() { ++count_; }
    // Values so far.
    uint32_t count() const { return count_; }

private:
    void* new_place();

    const field* member_ = nullptr;
    void* structure_ = nullptr;
    uint32_t count_ = 0;
    uint32_t capacity_ = 0;  // values that the array of a list has room for
};

}  // namespace zr::tool
