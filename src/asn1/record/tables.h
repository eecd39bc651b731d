// The tables of a record's fields at run time, made from its list.
#pragma once

#include "asn1/record/binding.h"
#include "asn1/record/shape.h"

namespace zr {

// The run-time form of one typed field.
template <field_kind Kind, class T, class C, uint32_t Size>
constexpr field run_time_field(const typed_field<Kind, T, C, Size>& typed) {
    using typed_type = typed_field<Kind, T, C, Size>;
    using element = typename element_of<typename object_of<typed_type>::type>::type;
    field made{};
    made.name = typed.name;
    made.count_name = typed.count_name;
    made.offset = static_cast<uint32_t>(typed.offset);
    made.count_offset = static_cast<uint32_t>(typed.count_offset);
    made.size = Size;
    made.kind = Kind;
    made.make_object_at = &make_object_at<typed_type>;
    if constexpr (std::is_class_v<T>) made.nested = &record<T>::type;
    if constexpr (!std::is_void_v<element>) made.make_element = &make_object<element>;
    if constexpr (Kind == field_kind::integer || Kind == field_kind::list_of_integers)
        made.integer = integer_type_of<T>();
    if constexpr (!std::is_void_v<C>) made.count = integer_type_of<C>();
    return made;
}

// The run-time table of the fields of S.
template <class S>
struct field_table {
    static constexpr size_t count = std::tuple_size_v<decltype(record<S>::fields)>;
    struct table {
        field fields[count];
    };
    static constexpr table make() {
        table made =
            std::apply([](const auto&... typed) { return table{{run_time_field(typed)...}}; }, record<S>::fields);
        for (size_t i = 0; i < count; ++i)
            made.fields[i].object_offset = static_cast<uint32_t>(object_offset(record<S>::fields, i));
        return made;
    }
    static constexpr table fields = make();
};

// The table of the fields of S that vary in length, those in embedded records among them.
template <class S, size_t... I>
constexpr size_t count_varying(std::index_sequence<I...>);
template <class S>
constexpr size_t count_varying() {
    return count_varying<S>(std::make_index_sequence<field_count_of<S>>());
}
template <class Field>
constexpr size_t varying_in() {
    if constexpr (Field::kind == field_kind::nested) return count_varying<typename Field::value_type>();
    return Field::kind == field_kind::octets || !is_leaf_field<Field>() ? 1 : 0;
}
template <class S, size_t... I>
constexpr size_t count_varying(std::index_sequence<I...>) {
    return (size_t{0} + ... + varying_in<field_type<S, I>>());
}

template <class S, size_t... I>
constexpr void add_varying(varying_field*& next, size_t offset, std::index_sequence<I...>);
template <class S, size_t I>
constexpr void add_varying_field(varying_field*& next, size_t offset) {
    using F = field_type<S, I>;
    if constexpr (F::kind == field_kind::nested) {
        using T = typename F::value_type;
        add_varying<T>(next, offset + field_offset<S, I>, std::make_index_sequence<field_count_of<T>>());
    } else if constexpr (varying_in<F>() != 0) {
        *next++ = {&field_table<S>::fields.fields[I], static_cast<uint32_t>(offset), is_own_list<S, I>};
    }
}
template <class S, size_t... I>
constexpr void add_varying(varying_field*& next, size_t offset, std::index_sequence<I...>) {
    (add_varying_field<S, I>(next, offset), ...);
}

template <class S>
struct varying_table {
    struct table {
        varying_field fields[count_varying<S>() + 1];
    };
    static constexpr table make() {
        table made{};
        varying_field* next = made.fields;
        add_varying<S>(next, 0, std::make_index_sequence<field_count_of<S>>());
        return made;
    }
    static constexpr table fields = make();
};

}  // namespace zr
