// The binding class of a record: one value object per field, derived from the list of fields.
#pragma once

#include <cstddef>
#include <new>

#include "asn1/asnbase/collections.h"
#include "asn1/record/field.h"
#include "asn1/record/release.h"
#include "asn1/record/tree.h"
#include "asn1/zrasnbase.h"
#include "asn1/zrasnutf8.h"

namespace zr {

template <class S>
class binding;

// The value object that carries a typed field.
template <class Field>
struct object_of;
template <class T>
struct object_of<typed_field<field_kind::integer, T>> {
    using type = zrasn_integer;
};
template <class T>
struct object_of<typed_field<field_kind::text, T>> {
    using type = zrasnUTF8String;
};
template <class T, class C>
struct object_of<typed_field<field_kind::octets, T, C>> {
    using type = zrasn_octetstring;
};
template <class T, uint32_t N>
struct object_of<typed_field<field_kind::fixed_octets, T, void, N>> {
    using type = zrasn_octetstring;
};
template <class T>
struct object_of<typed_field<field_kind::nested, T>> {
    using type = binding<T>;
};
template <class T>
struct object_of<typed_field<field_kind::optional_nested, T>> {
    using type = binding<T>;
};
template <class T, class C>
struct object_of<typed_field<field_kind::list_of_records, T, C>> {
    using type = zr_asn_sequenceof<binding<T>>;
};
template <class T, class C>
struct object_of<typed_field<field_kind::list_of_pointers, T, C>> {
    using type = zr_asn_sequenceof<binding<T>>;
};
template <class T, class C>
struct object_of<typed_field<field_kind::list_of_texts, T, C>> {
    using type = zr_asn_sequenceof<zrasnUTF8String>;
};
template <class T, class C>
struct object_of<typed_field<field_kind::list_of_integers, T, C>> {
    using type = zr_asn_sequenceof<zrasn_integer>;
};
template <class T, uint32_t N>
struct object_of<typed_field<field_kind::slots, T, void, N>> {
    using type = zr_asn_arrayof<binding<T>>;
};

// Makes the value object of a field in room of its size.
template <class Field>
zr_asn_object* make_object_at(void* room) {
    using object = typename object_of<Field>::type;
    auto* made = new (room) object(zr_normal);
    if constexpr (Field::kind == field_kind::slots) made->keep_positions(Field::size);
    return made;
}

// A binding's value objects lie one behind the other: where the one of field `index` begins, or with the number of
// fields the room that they take.
template <class... Fields>
constexpr size_t object_offset(const std::tuple<Fields...>&, size_t index) {
    constexpr size_t step = alignof(std::max_align_t);
    static_assert(((alignof(typename object_of<Fields>::type) <= step) && ...));
    constexpr size_t sizes[] = {(sizeof(typename object_of<Fields>::type) + step - 1) / step * step...};
    size_t sum = 0;
    for (size_t i = 0; i < index; ++i)
        sum += sizes[i];
    return sum;
}

template <class Object>
zr_asn_object* make_object(security_t mode) {
    return new (std::nothrow) Object(mode);
}

// The class of the elements that a field's list object holds; void for a field that is no list.
template <class Object>
struct element_of {
    using type = void;
};
template <class T>
struct element_of<zr_asn_sequenceof<T>> {
    using type = T;
};
template <class T>
struct element_of<zr_asn_arrayof<T>> {
    using type = typename zr_asn_arrayof<T>::cherce;
};

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

// binding converts between the structure S and the object tree. A binding object can be used any number of times. The
// operations return 0 or a status; set_value and get_value throw zr_asn_memexception, which encode_obj and decode_obj
// report to standard error and return as a status.
template <class S>
class binding : public zr_asnbase {
public:
    explicit binding(security_t mode) : zr_asnbase(mode) {
        set_type_name(record<S>::binding_name + sizeof "asn_" - 1);
        make_objects(*this, record<S>::type, objects_);
    }
    ~binding() override { destroy_objects(record<S>::type, objects_); }

    // set_value copies every field of `in`; a null text counts as empty.
    int set_value(S& in) {
        set_fields(*this, record<S>::type, &in);
        return 0;
    }
    // get_value clears `out` and fills it. Texts, byte strings, arrays and their elements come from malloc; free_obj
    // releases them.
    int get_value(S& out) {
        get_fields(*this, record<S>::type, &out);
        return 0;
    }
    // free_obj releases what get_value allocated inside `s`, not `s` itself, and leaves pointers null and counts 0.
    static void free_obj(S& s) { release_record(s); }

    // encode_obj gives the envelope of `in`, which the caller releases with zr_asn_buffer_free.
    int encode_obj(S& in, zr_asn_buffer_t& out, int version) {
        return encode_fields(*this, record<S>::type, &in, out, version);
    }
    // decode_obj fills `out` from an envelope. When the octets are refused `out` is as the caller gave it.
    int decode_obj(S& out, zr_asn_buffer_t& in, int version) {
        return decode_fields(*this, record<S>::type, &out, in, version);
    }

private:
    alignas(std::max_align_t) unsigned char objects_[object_offset(record<S>::fields, field_count_of<S>)];
};

}  // namespace zr
