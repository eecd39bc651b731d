// The tables of a record's fields at run time, made from its list.
#pragma once

#include "asn1/codec/record_codec.h"
#include "asn1/codec/values.h"
#include "asn1/record/binding.h"

namespace zr {

// The run-time form of field I of S.
template <class S, size_t I>
constexpr field run_time_field() {
    using F = field_at<S, I>;
    using T = typename F::value_type;
    using element = typename element_of<object_of<F>>::type;
    const auto& typed = std::get<I>(record<S>::fields);
    field made{};
    made.name = typed.name;
    made.count_name = typed.count_name;
    made.offset = static_cast<uint32_t>(typed.offset);
    made.count_offset = static_cast<uint32_t>(typed.count_offset);
    made.size = F::size;
    made.value = F::value;
    made.held = F::held;
    made.place_octets = sizeof(place_of<F>);
    made.secret = typed.secret;
    made.make_object_at = &make_object_at<F>;
    made.object_offset = static_cast<uint32_t>(object_offset(record<S>::fields, I));
    if constexpr (F::value == value_kind::record) made.record = &record<T>::type;
    if constexpr (!std::is_void_v<element>) made.make_element = &make_object<element>;
    if constexpr (F::value == value_kind::integer) made.integer = integer_type_of<T>();
    if constexpr (F::value == value_kind::version) made.integer = integer_type_of<int32_t>();
    if constexpr (!std::is_void_v<typename F::count_type>) made.count = integer_type_of<typename F::count_type>();
    return made;
}

// The run-time table of the fields of S.
template <class S>
struct field_table {
    struct table {
        field fields[field_count_of<S>];
    };
    template <size_t... I>
    static constexpr table make(std::index_sequence<I...>) {
        return {{run_time_field<S, I>()...}};
    }
    static constexpr table fields = make(field_indices<S>());
};

// Octets of a field or record: the fewest of any encoding that is accepted, and about how many the fields that do not
// vary in length take, with all headers.
template <class F>
constexpr size_t min_field_octets() {
    if constexpr (F::held == holding::one) return codec_of_value<F>::template least<F>;
    return F::held == holding::optional ? 0 : 2;
}
template <class S, size_t... I>
constexpr size_t sum_min_octets(std::index_sequence<I...>) {
    return (size_t{2} + ... + min_field_octets<field_at<S, I>>());
}
template <class S>
constexpr size_t min_octets() {
    return sum_min_octets<S>(field_indices<S>());
}

template <class F>
constexpr uint32_t typical_field_octets() {
    if constexpr (F::held == holding::one) return codec_of_value<F>::template typical<F>;
    return 2;
}
template <class S, size_t... I>
constexpr uint32_t sum_typical_octets(std::index_sequence<I...>) {
    return (2 + ... + typical_field_octets<field_at<S, I>>());
}
template <class S>
constexpr uint32_t typical_octets() {
    return sum_typical_octets<S>(field_indices<S>());
}

// A flat record holds no blocks at all.
template <class S>
constexpr bool is_flat();
template <class F>
constexpr bool is_flat_field() {
    if constexpr (F::held == holding::one && F::value == value_kind::record) return is_flat<typename F::value_type>();
    return F::held == holding::one && !codec_of_value<F>::holds_blocks;
}
template <class S, size_t... I>
constexpr bool all_flat_fields(std::index_sequence<I...>) {
    return (is_flat_field<field_at<S, I>>() && ...);
}
template <class S>
constexpr bool is_flat() {
    return all_flat_fields<S>(field_indices<S>());
}

// The table of the fields of S that vary in length, those in embedded records among them.
template <class S, size_t... I>
constexpr size_t count_varying(std::index_sequence<I...>);
template <class S>
constexpr size_t count_varying() {
    return count_varying<S>(field_indices<S>());
}
template <class F>
constexpr size_t varying_in() {
    if constexpr (F::held == holding::one && F::value == value_kind::record)
        return count_varying<typename F::value_type>();
    return F::value == value_kind::octets || !is_leaf_field<F>() ? 1 : 0;
}
template <class S, size_t... I>
constexpr size_t count_varying(std::index_sequence<I...>) {
    return (size_t{0} + ... + varying_in<field_at<S, I>>());
}

template <class S, size_t... I>
constexpr void add_varying(varying_field*& next, size_t offset, std::index_sequence<I...>);
template <class F>
constexpr void add_varying_field(varying_field*& next, size_t offset) {
    if constexpr (F::held == holding::one && F::value == value_kind::record) {
        using R = typename F::value_type;
        add_varying<R>(next, offset + F::offset, field_indices<R>());
    } else if constexpr (varying_in<F>() != 0) {
        *next++ = {&field_table<typename F::structure>::fields.fields[F::index], static_cast<uint32_t>(offset),
                   F::is_own_list};
    }
}
template <class S, size_t... I>
constexpr void add_varying(varying_field*& next, size_t offset, std::index_sequence<I...>) {
    (add_varying_field<field_at<S, I>>(next, offset), ...);
}

template <class S>
struct varying_table {
    struct table {
        varying_field fields[count_varying<S>() + 1];
    };
    static constexpr table make() {
        table made{};
        varying_field* next = made.fields;
        add_varying<S>(next, 0, field_indices<S>());
        return made;
    }
    static constexpr table fields = make();
};

// What can initialise any member.
struct any_value {
    template <class T>
    operator T() const;
};
template <class S, class Indices, class = void>
struct takes_values : std::false_type {};
template <class S, size_t... I>
struct takes_values<S, std::index_sequence<I...>,
                    std::void_t<decltype(S{(static_cast<void>(I), std::declval<any_value>())...})>> : std::true_type {};

// The members that a field takes of the structure; an array counts by its elements, as it does in a list of initial
// values.
template <class F>
constexpr size_t members_of_field() {
    if (!has_member(F::value)) return 0;
    const size_t values = F::size != 0 ? F::size : 1;
    return std::is_void_v<typename F::count_type> ? values : values + 1;
}

// Whether the fields of S name all its members, each once, in the structure's order.
template <class S, size_t... I>
constexpr bool describes_members(std::index_sequence<I...>) {
    constexpr size_t count = (size_t{0} + ... + members_of_field<field_at<S, I>>());
    if (!takes_values<S, std::make_index_sequence<count>>::value) return false;
    if (takes_values<S, std::make_index_sequence<count + 1>>::value) return false;
    size_t behind = 0;
    bool in_order = true;
    const auto follows = [&](size_t offset) {
        in_order = in_order && offset >= behind;
        behind = offset + 1;
    };
    ((std::is_void_v<typename field_at<S, I>::count_type> ? void() : follows(field_at<S, I>::count_offset),
      has_member(field_at<S, I>::value) ? follows(field_at<S, I>::offset) : void()),
     ...);
    return in_order;
}
template <class S>
constexpr bool describes_all_members() {
    return describes_members<S>(field_indices<S>());
}

}  // namespace zr
