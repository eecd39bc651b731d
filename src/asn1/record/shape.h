// What templates ask of a record's list of fields.
#pragma once

#include <utility>

#include "asn1/record/field.h"
#include "asn1/record/inline.h"

namespace zr {

template <class S>
constexpr size_t field_count_of = std::tuple_size_v<decltype(record<S>::fields)>;

template <class S, size_t I>
using field_type = std::tuple_element_t<I, std::remove_const_t<decltype(record<S>::fields)>>;

// The member of a field, and the member that counts it.
template <class S, size_t I>
constexpr size_t field_offset = std::get<I>(record<S>::fields).offset;
template <class S, size_t I>
constexpr size_t field_count_offset = std::get<I>(record<S>::fields).count_offset;
template <class S, size_t I>
constexpr uint32_t field_size = field_type<S, I>::size;

template <class T, class S>
T& member_at(S& structure, size_t offset) {
    return place<T>(&structure, offset);
}
template <class T, class S>
const T& member_at(const S& structure, size_t offset) {
    return place<T>(const_cast<S*>(&structure), offset);
}

constexpr bool is_list(field_kind kind) {
    return kind == field_kind::list_of_records || kind == field_kind::list_of_pointers ||
           kind == field_kind::list_of_texts || kind == field_kind::list_of_integers;
}

// The type of a list's array elements.
template <class Field>
using array_element = std::conditional_t<Field::kind == field_kind::list_of_pointers, typename Field::value_type*,
                                         typename Field::value_type>;

// Whether field I of S is a list of S itself.
template <class S, size_t I>
constexpr bool is_own_list =
    is_list(field_type<S, I>::kind) && std::is_same_v<typename field_type<S, I>::value_type, S>;

template <class S, size_t... I>
constexpr size_t count_own_lists(std::index_sequence<I...>) {
    return (size_t{0} + ... + (is_own_list<S, I> ? 1 : 0));
}

// Whether S contains itself. Such a record nests as deep as the data does, and is worked off without recursion; for
// that its list of itself is its last field.
template <class S>
constexpr bool contains_itself() {
    constexpr size_t count = count_own_lists<S>(std::make_index_sequence<field_count_of<S>>());
    if constexpr (count != 0)
        static_assert(count == 1 && is_own_list<S, field_count_of<S> - 1>,
                      "a record's list of itself must be its last field");
    return count != 0;
}

// Whether S has neither lists nor slots, in what it embeds neither: its code is short and stands where it is used.
template <class S>
constexpr bool is_leaf();
template <class F>
constexpr bool is_leaf_field() {
    if constexpr (F::kind == field_kind::nested) return is_leaf<typename F::value_type>();
    return !is_list(F::kind) && F::kind != field_kind::slots && F::kind != field_kind::optional_nested;
}
template <class S, size_t... I>
constexpr bool all_leaf_fields(std::index_sequence<I...>) {
    return (is_leaf_field<field_type<S, I>>() && ...);
}
template <class S>
constexpr bool is_leaf() {
    return all_leaf_fields<S>(std::make_index_sequence<field_count_of<S>>());
}

// Whether S holds no blocks at all.
template <class S>
constexpr bool is_flat();
template <class F>
constexpr bool is_flat_field() {
    if constexpr (F::kind == field_kind::nested) return is_flat<typename F::value_type>();
    return F::kind == field_kind::integer || F::kind == field_kind::fixed_octets;
}
template <class S, size_t... I>
constexpr bool all_flat_fields(std::index_sequence<I...>) {
    return (is_flat_field<field_type<S, I>>() && ...);
}
template <class S>
constexpr bool is_flat() {
    return all_flat_fields<S>(std::make_index_sequence<field_count_of<S>>());
}

// The fewest octets that any encoding of a field or record has: an empty INTEGER is accepted too.
template <class S>
constexpr size_t min_octets();

template <class Field>
constexpr size_t min_field_octets() {
    if constexpr (Field::kind == field_kind::nested) return min_octets<typename Field::value_type>();
    return Field::kind == field_kind::optional_nested ? 0 : 2;
}
template <class S, size_t... I>
constexpr size_t sum_min_octets(std::index_sequence<I...>) {
    return (size_t{2} + ... + min_field_octets<field_type<S, I>>());
}
template <class S>
constexpr size_t min_octets() {
    return sum_min_octets<S>(std::make_index_sequence<field_count_of<S>>());
}

// The same of one element of a list.
template <class S, size_t I>
constexpr size_t min_element_octets() {
    using T = typename field_type<S, I>::value_type;
    if constexpr (std::is_class_v<T>) return min_octets<T>();
    return 2;
}

// About as many octets take the fields of S that do not vary in length, and all headers.
template <class S>
constexpr uint32_t typical_octets();
template <class Field>
constexpr uint32_t typical_field_octets() {
    if constexpr (Field::kind == field_kind::nested) return typical_octets<typename Field::value_type>();
    if constexpr (Field::kind == field_kind::slots) return 2;
    return Field::kind == field_kind::integer ? 4 : Field::kind == field_kind::text ? 16 : 2 + Field::size;
}
template <class S, size_t... I>
constexpr uint32_t sum_typical_octets(std::index_sequence<I...>) {
    return (2 + ... + typical_field_octets<field_type<S, I>>());
}
template <class S>
constexpr uint32_t typical_octets() {
    return sum_typical_octets<S>(std::make_index_sequence<field_count_of<S>>());
}

}  // namespace zr
