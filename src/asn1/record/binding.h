// The binding class of a record: one value object per field, derived from the list of fields.
#pragma once

#include <new>

#include "asn1/record/field.h"
#include "asn1/zrasnbase.h"

namespace zr {

// The value object that carries a typed field.
template <class Field>
struct object_of;
template <class T>
struct object_of<typed_field<field_kind::integer, T>> {
    using type = zrasn_integer;
};
template <class T, class C>
struct object_of<typed_field<field_kind::octets, T, C>> {
    using type = zrasn_octetstring;
};
template <class T>
struct object_of<typed_field<field_kind::fixed_octets, T>> {
    using type = zrasn_octetstring;
};
template <class T>
struct object_of<typed_field<field_kind::nested, T>> {
    using type = typename record<T>::binding;
};

// The value objects of a list of fields, made in the list's order and destroyed in the reverse.
template <class... Fields>
struct field_objects {
    template <class Visit>
    void each(Visit&&) {}
};
template <class First, class... Rest>
struct field_objects<First, Rest...> {
    typename object_of<First>::type object{zr_normal};
    field_objects<Rest...> rest;

    template <class Visit>
    void each(Visit&& visit) {
        visit(First::kind, object);
        rest.each(visit);
    }
};
template <class Tuple>
struct field_objects_of;
template <class... Fields>
struct field_objects_of<const std::tuple<Fields...>> {
    using type = field_objects<Fields...>;
};

// Prepares `object` as a field of `kind` and registers it with the binding.
ZR_API void register_field(zr_asnbase& binding, field_kind kind, zr_asn_object& object);

// set_fields copies a structure into the value objects of its binding, get_fields copies them into a structure, which
// it clears first. Both throw zr_asn_memexception. What get_fields has filled when it throws, free_fields releases.
ZR_API void set_fields(zr_asnbase& binding, const record_type& type, void* structure);
ZR_API void get_fields(zr_asnbase& binding, const record_type& type, void* structure);

// free_fields releases what get_fields allocated inside the structure and leaves its pointers null and its counts 0.
ZR_API void free_fields(const record_type& type, void* structure);

// binding converts between the structure S and the object tree. A binding object can be used any number of times. The
// operations return 0 or a status; set_value and get_value throw zr_asn_memexception, which encode_obj and decode_obj
// report to standard error and return as a status.
template <class S>
class ZR_API binding : public zr_asnbase {
public:
    explicit binding(security_t mode) : zr_asnbase(mode) {
        set_type_name(record<S>::binding_name + sizeof "asn_" - 1);
        fields_.each([this](field_kind kind, zr_asn_object& object) { register_field(*this, kind, object); });
    }

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
    static void free_obj(S& s) { free_fields(record<S>::type, &s); }

    // encode_obj gives the envelope of `in`, which the caller releases with zr_asn_buffer_free.
    int encode_obj(S& in, zr_asn_buffer_t& out, int version) {
        return guarded([&] {
            const int status = set_value(in);
            return status != 0 ? status : saveEncoding(*this, version, out);
        });
    }
    // decode_obj fills `out` from an envelope. When the octets are refused `out` is as the caller gave it.
    int decode_obj(S& out, zr_asn_buffer_t& in, int version) {
        return guarded([&] {
            const int status = loadObject(*this, version, in);
            return status != 0 ? status : get_value(out);
        });
    }

private:
    typename field_objects_of<decltype(record<S>::fields)>::type fields_;
};

// The entry points' bodies.
template <class S>
int encode_record(security_t mode, zr_asn_buffer_t& out, S& in) {
    return guarded([&] { return typename record<S>::binding(mode).encode_obj(in, out, 2); });
}
template <class S>
int decode_record(security_t mode, zr_asn_buffer_t& in, S& out) {
    return guarded([&] { return typename record<S>::binding(mode).decode_obj(out, in, 2); });
}

template <class Binding>
zr_asn_object* make_object(security_t mode) {
    return new (std::nothrow) Binding(mode);
}

template <class S>
constexpr record_type make_record_type() {
    return {record<S>::name,
            record<S>::binding_name,
            record<S>::module,
            field_table<S>::fields.fields,
            static_cast<uint32_t>(field_table<S>::count),
            sizeof(S),
            &make_object<typename record<S>::binding>};
}

}  // namespace zr
