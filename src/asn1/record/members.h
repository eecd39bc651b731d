// From a field and a structure to the values that the structure holds: no other page turns the two into pointers.
//
// A value lies in a place: the member itself, or an entry of the array or of the slots. Where a field holds its values
// by pointer the place is that pointer, and the value is what it points to, unless it is null.
//
// What null is, each kind of value says for itself: a text may be null in its place, and then counts as empty; octets
// are null when their pointer is, and then their length counts as 0; optional octets of length 0 are absent; a record
// held by pointer is null when the pointer is; integers and fixed octets are never null. A version has no member: its
// place is the structure's beginning, and nothing is read or stored there.
#pragma once

#include <cstring>

#include "asn1/record/record_type.h"

namespace zr {

// The object of type T at an offset of a structure.
template <class T>
T& place(void* structure, size_t offset) {
    return *reinterpret_cast<T*>(static_cast<unsigned char*>(structure) + offset);
}
template <class T>
const T& place(const void* structure, size_t offset) {
    return *reinterpret_cast<const T*>(static_cast<const unsigned char*>(structure) + offset);
}

// The value of a C integer of the given type; one of 32 unsigned bits as the same bits signed.
inline int32_t load_integer(const void* from, integer_type type) {
    switch (type.octets) {
        case 1:
            return type.is_signed ? place<int8_t>(from, 0) : place<uint8_t>(from, 0);
        case 2:
            return type.is_signed ? place<int16_t>(from, 0) : place<uint16_t>(from, 0);
        default:
            return place<int32_t>(from, 0);
    }
}

// Stores the low bits that fit.
inline void store_integer(void* to, integer_type type, int32_t value) {
    switch (type.octets) {
        case 1:
            place<uint8_t>(to, 0) = static_cast<uint8_t>(value);
            break;
        case 2:
            place<uint16_t>(to, 0) = static_cast<uint16_t>(value);
            break;
        default:
            place<int32_t>(to, 0) = value;
    }
}

// The counting member of a list or of octets as it stands.
inline uint32_t stored_count(const field& field, const void* structure) {
    return static_cast<uint32_t>(load_integer(&place<char>(structure, field.count_offset), field.count));
}
inline void store_count(const field& field, void* structure, uint32_t count) {
    store_integer(&place<char>(structure, field.count_offset), field.count, static_cast<int32_t>(count));
}
// The most that the counting member can say.
inline uint32_t most_count(const field& field) { return field.count.octets == 2 ? UINT16_MAX : UINT32_MAX; }

// The array of a list, the first of the slots, or the member itself: where the first place is.
inline void* first_place(const field& field, void* structure) {
    return is_list(field.held) ? place<void*>(structure, field.offset) : &place<char>(structure, field.offset);
}
inline const void* first_place(const field& field, const void* structure) {
    return first_place(field, const_cast<void*>(structure));
}

// How many places there are: of a list as many as it counts, none without an array; of slots all, used or not.
inline uint32_t place_count(const field& field, const void* structure) {
    switch (field.held) {
        case holding::one:
        case holding::optional:
            return 1;
        case holding::list:
        case holding::pointer_list:
            return first_place(field, structure) != nullptr ? stored_count(field, structure) : 0;
        case holding::slots:
            return field.size;
    }
    return 0;
}

// Place `index`, of which place_count tells how many there are.
inline void* place_at(const field& field, void* structure, uint32_t index) {
    return static_cast<unsigned char*>(first_place(field, structure)) + size_t{index} * field.place_octets;
}
inline const void* place_at(const field& field, const void* structure, uint32_t index) {
    return place_at(field, const_cast<void*>(structure), index);
}

inline bool is_by_pointer(const field& field) { return is_by_pointer(field.value, field.held); }

// The length of octets: 0 for null ones, whatever the counting member says.
inline uint32_t octets_length(const field& field, const void* structure) {
    return place<void*>(structure, field.offset) != nullptr ? stored_count(field, structure) : 0;
}

// The value in a place: the place itself, or what the pointer there points to; null for one that is absent.
inline void* value_at(const field& field, void* structure, uint32_t index = 0) {
    void* where = place_at(field, structure, index);
    if (is_by_pointer(field)) return place<void*>(where, 0);
    const bool absent = field.held == holding::optional && octets_length(field, structure) == 0;
    return absent ? nullptr : where;
}
inline const void* value_at(const field& field, const void* structure, uint32_t index = 0) {
    return value_at(field, const_cast<void*>(structure), index);
}

// A text, where the null one is empty.
inline const char* text_in(const void* where) {
    const char* text = place<const char*>(where, 0);
    return text != nullptr ? text : "";
}

// How many places a list or slots have up to the last that is used: the elements of its SEQUENCE OF.
inline uint32_t used_places(const field& field, const void* structure) {
    uint32_t count = place_count(field, structure);
    if (field.held == holding::slots)
        while (count != 0 && value_at(field, structure, count - 1) == nullptr)
            --count;
    return count;
}

}  // namespace zr
