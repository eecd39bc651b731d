// The binding class of a record: one value object per field, derived from the list of fields.
#pragma once

#include <cstddef>
#include <new>

#include "asn1/asnbase/collections.h"
#include "asn1/record/tree.h"
#include "asn1/record/value_objects.h"

namespace zr {

// The object that carries what a field holds, made from the object of its values.
template <holding Held, class Object>
struct held_object {
    using type = Object;
};
template <class Object>
struct held_object<holding::list, Object> {
    using type = zr_asn_sequenceof<Object>;
};
template <class Object>
struct held_object<holding::pointer_list, Object> {
    using type = zr_asn_sequenceof<Object>;
};
template <class Object>
struct held_object<holding::slots, Object> {
    using type = zr_asn_arrayof<Object>;
};
template <class Field>
using object_of =
    typename held_object<Field::held, typename value_object<Field::value, typename Field::value_type>::type>::type;

// Makes the value object of a field in room of its size.
template <class Field>
zr_asn_object* make_object_at(void* room) {
    auto* made = new (room) object_of<Field>(zr_normal);
    if constexpr (Field::held == holding::slots) made->keep_positions(Field::size);
    if constexpr (Field::value == value_kind::version) made->set_value(1);
    return made;
}

// A binding's value objects lie one behind the other: where the one of field `index` begins, or with the number of
// fields the room that they take.
template <class... Fields>
constexpr size_t object_offset(const std::tuple<Fields...>&, size_t index) {
    constexpr size_t step = alignof(std::max_align_t);
    static_assert(((alignof(object_of<Fields>) <= step) && ...));
    constexpr size_t sizes[] = {(sizeof(object_of<Fields>) + step - 1) / step * step...};
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
    int set_value(const S& in) {
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
    static void free_obj(S& s) { record<S>::type.free(&s); }

    // encode_obj gives the envelope of `in`, which the caller releases with zr_asn_buffer_free.
    [[nodiscard]] int encode_obj(const S& in, zr_asn_buffer_t& out, int version) {
        return encode_fields(*this, record<S>::type, &in, out, version);
    }
    // decode_obj fills `out` from an envelope. When the octets are refused `out` is as the caller gave it; when memory
    // ends or a text cannot be converted it holds what was complete by then, for free_obj.
    [[nodiscard]] int decode_obj(S& out, const zr_asn_buffer_t& in, int version) {
        return decode_fields(*this, record<S>::type, &out, in, version);
    }

private:
    alignas(std::max_align_t) unsigned char objects_[object_offset(record<S>::fields,
                                                                   std::tuple_size_v<decltype(record<S>::fields)>)];
};

}  // namespace zr
