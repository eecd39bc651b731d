// What the codec's templates ask of a record's list of fields.
#pragma once

#include <utility>

#include "asn1/record/field.h"

namespace zr {

template <class S>
constexpr size_t field_count_of = std::tuple_size_v<decltype(record<S>::fields)>;
template <class S>
using field_indices = std::make_index_sequence<field_count_of<S>>;

// field_at is field I of S as a type, with what its entry in the list says as constants.
template <class S, size_t I>
struct field_at : std::tuple_element_t<I, std::remove_const_t<decltype(record<S>::fields)>> {
    using structure = S;
    static constexpr size_t index = I;
    static constexpr size_t offset = std::get<I>(record<S>::fields).offset;
    static constexpr size_t count_offset = std::get<I>(record<S>::fields).count_offset;
    static constexpr bool secret = std::get<I>(record<S>::fields).secret;
    // Whether it is a list of S itself.
    static constexpr bool is_own_list = is_list(field_at::held) && std::is_same_v<typename field_at::value_type, S>;
};

// From a field and a structure to what the structure holds, as in asn1/record/members.h.

template <class T, class S>
T& object_at(S& structure, size_t offset) {
    return *reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(&structure) + offset);
}
template <class T, class S>
const T& object_at(const S& structure, size_t offset) {
    return *reinterpret_cast<const T*>(reinterpret_cast<const unsigned char*>(&structure) + offset);
}

// What lies in one place: the value itself, or a pointer to it.
template <class F>
using place_of = std::conditional_t<is_by_pointer(F::value, F::held), typename F::value_type*, typename F::value_type>;

// The member, if it holds one value or an optional one; else the first of the slots.
template <class F, class S>
auto& member_of(S& structure) {
    return object_at<place_of<F>>(structure, F::offset);
}
// The array of a list.
template <class F, class S>
auto& array_of(S& structure) {
    return object_at<place_of<F>*>(structure, F::offset);
}
// The counting member of a list or of octets.
template <class F, class S>
auto& count_of(S& structure) {
    return object_at<typename F::count_type>(structure, F::count_offset);
}

// The length of octets; none without them, whatever is counted.
template <class F, class S>
uint32_t octets_length(const S& structure) {
    return member_of<F>(structure) != nullptr ? count_of<F>(structure) : 0;
}

// How many elements a list has; none without an array.
template <class F, class S>
uint32_t element_count(const S& structure) {
    return array_of<F>(structure) != nullptr ? count_of<F>(structure) : 0;
}

// For the last branch of a choice between kinds: it does not compile if a kind is missing before it.
template <class F>
constexpr bool unknown_kind = false;

// S contains itself if a list of S is among its fields. Such a record nests as deep as the data does, and is worked off
// without recursion; for that its list of itself is its last field.
template <class S, size_t... I>
constexpr size_t count_own_lists(std::index_sequence<I...>) {
    return (size_t{0} + ... + (field_at<S, I>::is_own_list ? 1 : 0));
}
template <class S>
constexpr bool contains_itself() {
    constexpr bool is_last = field_at<S, field_count_of<S> - 1>::is_own_list;
    static_assert(count_own_lists<S>(field_indices<S>()) == is_last,
                  "a record's list of itself must be its last field");
    return is_last;
}
template <class S>
using own_list = field_at<S, field_count_of<S> - 1>;

// Whether a record has a secret member, or what it embeds has one.
template <class S>
constexpr bool has_secrets();
template <class F>
constexpr bool has_secrets_in_field() {
    if constexpr (F::value == value_kind::record && !F::is_own_list) return has_secrets<typename F::value_type>();
    return F::secret;
}
template <class S, size_t... I>
constexpr bool has_secrets_in_fields(std::index_sequence<I...>) {
    return (has_secrets_in_field<field_at<S, I>>() || ...);
}
template <class S>
constexpr bool has_secrets() {
    return has_secrets_in_fields<S>(field_indices<S>());
}

// Whether a record holds texts, or what it embeds does.
template <class S>
constexpr bool has_texts();
template <class F>
constexpr bool has_texts_in_field() {
    if constexpr (F::value == value_kind::record && !F::is_own_list) {
        return has_texts<typename F::value_type>();
    } else {
        return F::value == value_kind::text;
    }
}
template <class S, size_t... I>
constexpr bool has_texts_in_fields(std::index_sequence<I...>) {
    return (has_texts_in_field<field_at<S, I>>() || ...);
}
template <class S>
constexpr bool has_texts() {
    return has_texts_in_fields<S>(field_indices<S>());
}

// A leaf has neither lists nor slots nor optional records, in what it embeds neither: its code is short and stands
// where it is used. Optional octets are written like others, or not at all.
template <class S>
constexpr bool is_leaf();
template <class F>
constexpr bool is_leaf_field() {
    if constexpr (F::held == holding::optional) return F::value == value_kind::octets;
    if constexpr (F::held != holding::one) return false;
    if constexpr (F::value == value_kind::record) return is_leaf<typename F::value_type>();
    return true;
}
template <class S, size_t... I>
constexpr bool all_leaf_fields(std::index_sequence<I...>) {
    return (is_leaf_field<field_at<S, I>>() && ...);
}
template <class S>
constexpr bool is_leaf() {
    return all_leaf_fields<S>(field_indices<S>());
}

}  // namespace zr
