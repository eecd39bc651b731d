// How one C structure maps to one ASN.1 SEQUENCE: the list of its fields.
//
// A record is described once, by a constexpr list of typed fields made with the builders below:
//
//     struct attr_s_t { char* name; uint32_t value_count; value_s_t* values; };
//     ... zr::text(ZR_M(name)), zr::list(ZR_M(value_count), ZR_M(values)) ...
//
// Each builder takes typed members, so a member of the wrong type does not compile. Templates unroll the list
// (zr::record<S>::fields); the same list as a table (zr::record_type) can be walked in a loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "asn1/export.h"

class zr_asn_object;
enum security_t : int;

// A member of the structure that is being described: its name, type and place.
#define ZR_M(name) \
    zr::member<self, decltype(self::name)> { #name, offsetof(self, name) }

namespace zr {

struct record_type;

// record<S> describes the structure S; ZR_RECORD (asn1/record/record.h) specialises it.
template <class S>
struct record;

template <class S, class T>
struct member {
    const char* name;
    size_t offset;
};

enum class field_kind : uint8_t {
    integer,       // any C integer of at most 32 bits: INTEGER
    octets,        // count and unsigned char*: OCTET STRING
    fixed_octets,  // unsigned char[N]: OCTET STRING
    nested,        // a record embedded by value: SEQUENCE
};

// A C integer type at run time.
struct integer_type {
    uint8_t octets;
    bool is_signed;
};

template <class T>
constexpr integer_type integer_type_of() {
    static_assert(std::is_integral_v<T> && !std::is_same_v<T, bool> && sizeof(T) <= 4, "an integer of at most 32 bits");
    return {sizeof(T), std::is_signed_v<T>};
}

// One field at run time.
struct field {
    const char* name;           // of the member; of the pointer member where there is a count too
    const char* count_name;     // of the member that counts elements or octets, or null
    const record_type* nested;  // the record of nested fields, list elements and slots, or null
    uint32_t offset;            // of the member
    uint32_t count_offset;      // of the counting member
    uint32_t size;              // fixed_octets: octets; else 0
    field_kind kind;
    integer_type integer;  // integer
    integer_type count;    // the counting member
};

// A record at run time.
struct record_type {
    const char* name;     // of the structure, such as "attrlist_s_t"
    const char* binding;  // of the binding class, such as "asn_attrlist_t"
    const char* module;   // of the schema module, such as "attrlist_asn"
    const field* fields;
    uint32_t field_count;
    uint32_t size;                                    // of the structure in octets
    zr_asn_object* (*make_binding)(security_t mode);  // a new binding object on the heap; null when memory is out

    const field* begin() const { return fields; }
    const field* end() const { return fields + field_count; }
};

// One field at compile time: T is the member's type (the element's for lists and slots), C the counting member's.
template <field_kind Kind, class T, class C = void>
struct typed_field {
    static constexpr field_kind kind = Kind;
    using value_type = T;
    using count_type = C;

    const char* name;
    size_t offset;
    const char* count_name = nullptr;
    size_t count_offset = 0;
    uint32_t size = 0;
};

template <class S, class T>
constexpr auto integer(member<S, T> value) {
    static_assert(integer_type_of<T>().octets != 0);
    return typed_field<field_kind::integer, T>{value.name, value.offset};
}

template <class S>
constexpr auto octets(member<S, uint32_t> length, member<S, unsigned char*> data) {
    return typed_field<field_kind::octets, unsigned char*, uint32_t>{data.name, data.offset, length.name,
                                                                     length.offset};
}

template <class S, uint32_t N>
constexpr auto fixed_octets(member<S, uint8_t[N]> value) {
    return typed_field<field_kind::fixed_octets, uint8_t[N]>{value.name, value.offset, nullptr, 0, N};
}

template <class S, class R>
constexpr auto nested(member<S, R> value) {
    static_assert(std::is_class_v<R>, "a record embedded by value");
    return typed_field<field_kind::nested, R>{value.name, value.offset};
}

// sequence is a record's list of fields, in the order of their encodings.
template <class... Fields>
constexpr std::tuple<Fields...> sequence(Fields... fields) {
    return {fields...};
}

// The run-time form of one typed field.
template <field_kind Kind, class T, class C>
constexpr field run_time_field(const typed_field<Kind, T, C>& typed) {
    field made{typed.name,
               typed.count_name,
               nullptr,
               static_cast<uint32_t>(typed.offset),
               static_cast<uint32_t>(typed.count_offset),
               typed.size,
               Kind,
               {0, false},
               {0, false}};
    if constexpr (std::is_class_v<T>) made.nested = &record<T>::type;
    if constexpr (Kind == field_kind::integer) made.integer = integer_type_of<T>();
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
        return std::apply([](const auto&... typed) { return table{{run_time_field(typed)...}}; }, record<S>::fields);
    }
    static constexpr table fields = make();
};

// place points at a field of a structure: the one function that turns (field, structure) into a pointer.
template <class T>
T& place(void* structure, size_t offset) {
    return *reinterpret_cast<T*>(static_cast<unsigned char*>(structure) + offset);
}

}  // namespace zr
