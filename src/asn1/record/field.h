// How one C structure maps to one ASN.1 SEQUENCE: the list of its fields.
//
// A record is described once, by a constexpr list of typed fields made with the builders below:
//
//     struct attr_s_t { char* name; uint32_t value_count; value_s_t* values; };
//     ... zr::text(ZR_M(name)), zr::list(ZR_M(value_count), ZR_M(values)) ...
//
// Each builder takes typed members, so a member of the wrong type does not compile. Templates unroll the list
// (zr::record<S>::fields); the same list as a table (zr::record_type) can be walked in a loop.
//
// A field says two things: what one value of it is, and how the structure holds its values. Everything that is done
// with records goes through the values that a field holds (asn1/record/members.h) and asks each what it is.
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

// A member of the structure S that has the type T: what ZR_M gives a builder.
template <class S, class T>
struct member {
    const char* name;  // as in C
    size_t offset;     // in the structure
};

// What one value is.
enum class value_kind : uint8_t {
    integer,       // any C integer of at most 32 bits: INTEGER
    version,       // no member: INTEGER, 1 when it is written, with any contents when it is read
    text,          // char*, NUL-terminated: UTF8String
    stored_text,   // char*, NUL-terminated: OCTET STRING that ends in the zero octet; never converted
    octets,        // unsigned char* and a length: OCTET STRING
    fixed_octets,  // unsigned char[N]: OCTET STRING
    record,        // a structure with a list of fields of its own: SEQUENCE
};

// How a structure holds the values of a field.
enum class holding : uint8_t {
    one,           // in the member itself
    optional,      // behind a pointer, null when there is none; octets in the member, of length 0 then: OPTIONAL
    list,          // in an array with a count: SEQUENCE OF
    pointer_list,  // each behind a pointer, in an array with a count: SEQUENCE OF
    slots,         // each behind a pointer, null for an empty slot, in the member: SEQUENCE OF CHOICE {NULL, value}
};

// The combinations that records use; no others are known to what works with records.
constexpr bool is_supported(value_kind value, holding held) {
    switch (value) {
        case value_kind::integer:
        case value_kind::text:
            return held == holding::one || held == holding::list;
        case value_kind::octets:
            return held == holding::one || held == holding::optional;
        case value_kind::version:
        case value_kind::stored_text:
        case value_kind::fixed_octets:
            return held == holding::one;
        case value_kind::record:
            return true;
    }
    return false;
}

// Whether the values lie in an array with a count.
constexpr bool is_list(holding held) { return held == holding::list || held == holding::pointer_list; }
// Whether each value lies behind a pointer of its own.
constexpr bool is_by_pointer(value_kind value, holding held) {
    switch (held) {
        case holding::one:
        case holding::list:
            return false;
        case holding::optional:
            return value == value_kind::record;
        case holding::pointer_list:
        case holding::slots:
            return true;
    }
    return false;
}
// Whether the value lies in a block of its own, to which the member points. A record's fields say it for themselves.
constexpr bool has_block(value_kind value) {
    switch (value) {
        case value_kind::text:
        case value_kind::stored_text:
        case value_kind::octets:
            return true;
        case value_kind::integer:
        case value_kind::version:
        case value_kind::fixed_octets:
        case value_kind::record:
            return false;
    }
    return false;
}
// Whether the structure has a member for the value.
constexpr bool has_member(value_kind value) { return value != value_kind::version; }

// A C integer type at run time.
struct integer_type {
    uint8_t octets;  // 1, 2 or 4
    bool is_signed;  // whether it has negative numbers
};

// The same of a C type.
template <class T>
constexpr integer_type integer_type_of() {
    static_assert(std::is_integral_v<T> && !std::is_same_v<T, bool> && sizeof(T) <= 4, "an integer of at most 32 bits");
    return {sizeof(T), std::is_signed_v<T>};
}

// Makes a value object on the heap; null when memory is out.
using object_maker = zr_asn_object* (*)(security_t mode);

// One field at run time.
struct field {
    const char* name;                              // of the member (of the pointer where there is a count too), if any
    const char* count_name;                        // of the member that counts elements or octets, or null
    const record_type* record;                     // of the values of the kind record, or null
    object_maker make_element;                     // of lists and slots, or null
    zr_asn_object* (*make_object_at)(void* room);  // makes the value object of a binding in its room
    uint32_t object_offset;                        // of that object in a binding's room
    uint32_t offset;                               // of the member
    uint32_t count_offset;                         // of the counting member
    uint32_t size;                                 // fixed_octets: octets; slots: their number; else 0
    uint32_t place_octets;                         // from one value of a list or of slots to the next
    value_kind value;                              // what one value is
    holding held;                                  // how the structure holds the values
    integer_type integer;                          // of the values of the kind integer; of a version 32 bits
    integer_type count;                            // of the counting member
    bool secret;                                   // the value is a password or the like
};

// One field at compile time: T is the C type of one value, C the counting member's. Size is what field::size tells.
template <value_kind Value, holding Held, class T, class C = void, uint32_t Size = 0>
struct typed_field {
    static_assert(is_supported(Value, Held), "no record holds such values in this way");
    static constexpr value_kind value = Value;
    static constexpr holding held = Held;
    static constexpr uint32_t size = Size;
    using value_type = T;
    using count_type = C;

    const char* name;
    size_t offset;
    const char* count_name = nullptr;
    size_t count_offset = 0;
    bool secret = false;
};

// The builders: each of these. A member that a builder does not take stops the compiler with one message: it then goes
// on with a field that fits any member, which is never used.
template <class T>
constexpr bool is_refused = false;
template <class S, class T>
constexpr auto refused(member<S, T> value) {
    return typed_field<value_kind::text, holding::one, char*>{value.name, value.offset};
}
template <class S, class C, class T>
constexpr auto refused(member<S, C> count, member<S, T> value) {
    return typed_field<value_kind::octets, holding::one, unsigned char*, uint32_t>{value.name, value.offset, count.name,
                                                                                   count.offset};
}

// Whether a field of S may hold records R: S itself, in a list, or a record that is described before.
template <class R, class = void>
struct is_described : std::false_type {};
template <class R>
struct is_described<R, std::void_t<decltype(sizeof(record<R>))>> : std::true_type {};
// The same as one word.
template <class S, class R>
constexpr bool may_hold = std::disjunction_v<std::is_same<S, R>, is_described<R>>;

// An integer of at most 32 bits: INTEGER.
template <class S, class T>
constexpr auto integer(member<S, T> value) {
    if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool> && sizeof(T) <= 4) {
        return typed_field<value_kind::integer, holding::one, T>{value.name, value.offset};
    } else {
        static_assert(is_refused<T>, "zr::integer takes an integer of at most 32 bits");
        return refused(value);
    }
}

// The INTEGER 1 that no member carries. It may be 1 or anything else when it is read.
struct no_member {};
// That field.
constexpr auto version() { return typed_field<value_kind::version, holding::one, no_member>{"version", 0}; }

// A char*: UTF8String.
template <class S, class T>
constexpr auto text(member<S, T> value) {
    static_assert(std::is_same_v<T, char*>, "zr::text takes a char*");
    return typed_field<value_kind::text, holding::one, char*>{value.name, value.offset};
}

// A char*: OCTET STRING with the text's zero octet.
template <class S, class T>
constexpr auto stored_text(member<S, T> value) {
    static_assert(std::is_same_v<T, char*>, "zr::stored_text takes a char*");
    return typed_field<value_kind::stored_text, holding::one, char*>{value.name, value.offset};
}

// A uint32_t and an unsigned char*: OCTET STRING.
template <class S, class C, class T>
constexpr auto octets(member<S, C> length, member<S, T> data) {
    static_assert(std::is_same_v<C, uint32_t> && std::is_same_v<T, unsigned char*>,
                  "zr::octets takes a uint32_t and an unsigned char*");
    return typed_field<value_kind::octets, holding::one, unsigned char*, uint32_t>{data.name, data.offset, length.name,
                                                                                   length.offset};
}

// The same, left out when there are none.
template <class S, class C, class T>
constexpr auto optional_octets(member<S, C> length, member<S, T> data) {
    static_assert(std::is_same_v<C, uint32_t> && std::is_same_v<T, unsigned char*>,
                  "zr::optional_octets takes a uint32_t and an unsigned char*");
    return typed_field<value_kind::octets, holding::optional, unsigned char*, uint32_t>{data.name, data.offset,
                                                                                        length.name, length.offset};
}

// An array of uint8_t: OCTET STRING.
template <class S, class T>
constexpr auto fixed_octets(member<S, T> value) {
    if constexpr (std::is_array_v<T> && std::is_same_v<std::remove_extent_t<T>, uint8_t>) {
        return typed_field<value_kind::fixed_octets, holding::one, T, void, std::extent_v<T>>{value.name, value.offset};
    } else {
        static_assert(is_refused<T>, "zr::fixed_octets takes an array of uint8_t");
        return refused(value);
    }
}

// A structure that is described before: SEQUENCE.
template <class S, class R>
constexpr auto nested(member<S, R> value) {
    if constexpr (is_described<R>::value) {
        return typed_field<value_kind::record, holding::one, R>{value.name, value.offset};
    } else {
        static_assert(is_refused<R>, "zr::nested takes a structure that ZR_RECORD has described before");
        return refused(value);
    }
}

// A pointer to one, null when there is none: SEQUENCE OPTIONAL.
template <class S, class T>
constexpr auto optional_nested(member<S, T> value) {
    using R = std::remove_pointer_t<T>;
    if constexpr (std::is_pointer_v<T> && is_described<R>::value) {
        return typed_field<value_kind::record, holding::optional, R>{value.name, value.offset};
    } else {
        static_assert(is_refused<T>, "zr::optional_nested takes a pointer to a structure that is described before");
        return refused(value);
    }
}

// What the elements of a list's array are.
template <class E>
constexpr value_kind element_value() {
    if (std::is_integral_v<E>) return value_kind::integer;
    return std::is_same_v<E, char*> ? value_kind::text : value_kind::record;
}

// A count and an array of records, of pointers to them, of texts or of 32-bit integers: SEQUENCE OF.
template <class S, class C, class T>
constexpr auto list(member<S, C> count, member<S, T> elements) {
    using E = std::remove_pointer_t<T>;
    using R = std::remove_pointer_t<E>;
    constexpr bool counts = std::is_same_v<C, uint16_t> || std::is_same_v<C, uint32_t>;
    constexpr bool holds =
        std::is_pointer_v<T> && (std::is_same_v<E, char*> || (std::is_integral_v<E> && sizeof(E) == 4) ||
                                 (std::is_class_v<R> && may_hold<S, R>));
    static_assert(counts, "zr::list takes a count that is uint16_t or uint32_t");
    static_assert(holds,
                  "zr::list takes an array of records described before, of pointers to them, of texts or of "
                  "32-bit integers");
    if constexpr (!counts || !holds) {
        return refused(count, elements);
    } else if constexpr (std::is_pointer_v<E> && std::is_class_v<R>) {
        return typed_field<value_kind::record, holding::pointer_list, R, C>{elements.name, elements.offset, count.name,
                                                                            count.offset};
    } else {
        return typed_field<element_value<E>(), holding::list, E, C>{elements.name, elements.offset, count.name,
                                                                    count.offset};
    }
}

// An array of pointers to records, null for an empty slot: SEQUENCE OF CHOICE {NULL, record}.
template <class S, class T>
constexpr auto slots(member<S, T> value) {
    using R = std::remove_pointer_t<std::remove_extent_t<T>>;
    if constexpr (std::is_array_v<T> && std::is_pointer_v<std::remove_extent_t<T>> && is_described<R>::value) {
        return typed_field<value_kind::record, holding::slots, R, void, std::extent_v<T>>{value.name, value.offset};
    } else {
        static_assert(is_refused<T>, "zr::slots takes an array of pointers to structures that are described before");
        return refused(value);
    }
}

// Both: what stands in a list of fields has come from a builder.
template <value_kind Value, holding Held, class T, class C, uint32_t Size>
constexpr auto checked(typed_field<Value, Held, T, C, Size> field) {
    return field;
}
template <class S, class T>
constexpr auto checked(member<S, T> value) {
    static_assert(is_refused<T>, "a member stands here without a builder such as zr::text");
    return refused(value);
}

// secret marks a field whose value is a password or the like: zr::secret(zr::text(ZR_M(password))). Its blocks are
// overwritten before they are released.
template <class Field>
constexpr auto secret(Field field) {
    auto marked = checked(field);
    static_assert(has_block(decltype(marked)::value), "zr::secret takes texts or octets");
    marked.secret = true;
    return marked;
}

// sequence is a record's list of fields, in the order of their encodings.
template <class... Fields>
constexpr auto sequence(Fields... fields) {
    return std::make_tuple(checked(fields)...);
}

}  // namespace zr
