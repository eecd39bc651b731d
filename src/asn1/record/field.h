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
#include "asn1/zr_asn_buffer.h"

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
    integer,           // any C integer of at most 32 bits: INTEGER
    text,              // char*, NUL-terminated: UTF8String
    octets,            // count and unsigned char*: OCTET STRING
    fixed_octets,      // unsigned char[N]: OCTET STRING
    nested,            // a record embedded by value: SEQUENCE
    optional_nested,   // a pointer to a record, null when absent: SEQUENCE OPTIONAL
    list_of_records,   // count and array of records: SEQUENCE OF
    list_of_pointers,  // count and array of pointers to records: SEQUENCE OF
    list_of_texts,     // count and array of char*: SEQUENCE OF UTF8String
    list_of_integers,  // count and array of integers: SEQUENCE OF INTEGER
    slots,             // fixed array of pointers to records, null for an empty slot: SEQUENCE OF CHOICE {NULL, record}
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

// Makes a value object on the heap; null when memory is out.
using object_maker = zr_asn_object* (*)(security_t mode);

// One field at run time.
struct field {
    const char* name;                              // of the member; of the pointer member where there is a count too
    const char* count_name;                        // of the member that counts elements or octets, or null
    const record_type* nested;                     // the record of nested fields, list elements and slots, or null
    object_maker make_element;                     // of lists and slots, or null
    zr_asn_object* (*make_object_at)(void* room);  // makes the value object of a binding in its room
    uint32_t object_offset;                        // of that object in a binding's room
    uint32_t offset;                               // of the member
    uint32_t count_offset;                         // of the counting member
    uint32_t size;                                 // fixed_octets: octets; slots: their number; else 0
    field_kind kind;
    integer_type integer;  // integer and list_of_integers
    integer_type count;    // the counting member

    // The octets of one element of a list's array.
    size_t element_octets() const;
};

// A field whose encodings differ much in length, in a record or in what it embeds: texts are taken to be short.
struct varying_field {
    const field* what;
    uint32_t offset;  // of the structure with the field
    bool own_list;    // a list of just that record
};

class writer;
class counter;

// A record's direct codec on an untyped structure (asn1/record/encode.h, decode.h, release.h), and its binding class.
struct record_codec {
    unsigned char* (*write)(writer sink, const void* in);
    uint64_t (*count)(counter sink, const void* in);
    const unsigned char* (*read)(const unsigned char* at, const unsigned char* end, void* out);
    void (*release)(void* structure);
    object_maker make_binding;
};

// A record at run time.
struct record_type {
    const char* name;     // of the structure, such as "attrlist_s_t"
    const char* binding;  // of the binding class, such as "asn_attrlist_t"
    const char* module;   // of the schema module, such as "attrlist_asn"
    const field* fields;
    uint32_t field_count;
    uint32_t size;            // of the structure in octets
    uint32_t min_octets;      // the fewest that any encoding has
    uint32_t typical_octets;  // about as many take the fields that do not vary
    const varying_field* varying;
    uint32_t varying_count;
    bool is_leaf;  // without lists, slots and optional records
    record_codec codec;

    const field* begin() const { return fields; }
    const field* end() const { return fields + field_count; }
    // Whether the last field is a list of this record itself.
    bool contains_itself() const { return fields[field_count - 1].nested == this; }

    // The record's entry points on an untyped structure (see ZR_RECORD in asn1/record/record.h).
    ZR_API int encode(zr_asn_buffer_t& out, const void* in) const;
    ZR_API int encode_lcs(zr_asn_buffer_t& out, void* in) const;
    ZR_API int decode(zr_asn_buffer_t& in, void* out) const;
    ZR_API int decode_lcs(zr_asn_buffer_t& in, void* out) const;
    void free(void* structure) const { codec.release(structure); }
};

inline size_t field::element_octets() const {
    switch (kind) {
        case field_kind::list_of_records:
            return nested->size;
        case field_kind::list_of_integers:
            return integer.octets;
        default:
            return sizeof(void*);
    }
}

// One field at compile time: T is the member's type (the element's for lists and slots), C the counting member's.
// Size is what field::size tells.
template <field_kind Kind, class T, class C = void, uint32_t Size = 0>
struct typed_field {
    static constexpr field_kind kind = Kind;
    static constexpr uint32_t size = Size;
    using value_type = T;
    using count_type = C;

    const char* name;
    size_t offset;
    const char* count_name = nullptr;
    size_t count_offset = 0;
};

template <class S, class T>
constexpr auto integer(member<S, T> value) {
    static_assert(integer_type_of<T>().octets != 0);
    return typed_field<field_kind::integer, T>{value.name, value.offset};
}

template <class S>
constexpr auto text(member<S, char*> value) {
    return typed_field<field_kind::text, char*>{value.name, value.offset};
}

template <class S>
constexpr auto octets(member<S, uint32_t> length, member<S, unsigned char*> data) {
    return typed_field<field_kind::octets, unsigned char*, uint32_t>{data.name, data.offset, length.name,
                                                                     length.offset};
}

template <class S, uint32_t N>
constexpr auto fixed_octets(member<S, uint8_t[N]> value) {
    return typed_field<field_kind::fixed_octets, uint8_t[N], void, N>{value.name, value.offset};
}

template <class S, class R>
constexpr auto nested(member<S, R> value) {
    static_assert(std::is_class_v<R>, "a record embedded by value");
    return typed_field<field_kind::nested, R>{value.name, value.offset};
}

template <class S, class R>
constexpr auto optional_nested(member<S, R*> value) {
    static_assert(std::is_class_v<R>, "a pointer to a record");
    return typed_field<field_kind::optional_nested, R>{value.name, value.offset};
}

template <class S, class C, class E>
constexpr auto list(member<S, C> count, member<S, E*> elements) {
    static_assert(std::is_unsigned_v<C> && (sizeof(C) == 2 || sizeof(C) == 4), "a count is uint16_t or uint32_t");
    if constexpr (std::is_same_v<E, char*>) {
        return typed_field<field_kind::list_of_texts, E, C>{elements.name, elements.offset, count.name, count.offset};
    } else if constexpr (std::is_pointer_v<E>) {
        using R = std::remove_pointer_t<E>;
        static_assert(std::is_class_v<R>, "pointers to records");
        return typed_field<field_kind::list_of_pointers, R, C>{elements.name, elements.offset, count.name,
                                                               count.offset};
    } else if constexpr (std::is_integral_v<E>) {
        static_assert(integer_type_of<E>().octets == 4, "32-bit integers");
        return typed_field<field_kind::list_of_integers, E, C>{elements.name, elements.offset, count.name,
                                                               count.offset};
    } else {
        static_assert(std::is_class_v<E>, "an array of records, of pointers to records, of texts or of integers");
        return typed_field<field_kind::list_of_records, E, C>{elements.name, elements.offset, count.name, count.offset};
    }
}

template <class S, class R, uint32_t N>
constexpr auto slots(member<S, R* [N]> value) {
    static_assert(std::is_class_v<R>, "pointers to records");
    return typed_field<field_kind::slots, R, void, N>{value.name, value.offset};
}

// sequence is a record's list of fields, in the order of their encodings.
template <class... Fields>
constexpr std::tuple<Fields...> sequence(Fields... fields) {
    return {fields...};
}

// place points at a field of a structure: the one function that turns (field, structure) into a pointer.
template <class T>
T& place(void* structure, size_t offset) {
    return *reinterpret_cast<T*>(static_cast<unsigned char*>(structure) + offset);
}

}  // namespace zr
