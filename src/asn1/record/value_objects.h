// The objects of the tree that carry the values of a record's fields.
#pragma once

#include "asn1/record/field.h"
#include "asn1/zrasnbase.h"
#include "asn1/zrasnutf8.h"

namespace zr {

template <class S>
class binding;

// The object that carries one value of a kind; T is the value's C type.
template <value_kind Value, class T>
struct value_object;
template <class T>
struct value_object<value_kind::integer, T> {
    using type = zrasn_integer;
};
template <class T>
struct value_object<value_kind::version, T> {
    using type = zr_asn_integer;
};
template <class T>
struct value_object<value_kind::text, T> {
    using type = zrasnUTF8String;
};
template <class T>
struct value_object<value_kind::stored_text, T> {
    using type = zr_asn_octetstring;
};
template <class T>
struct value_object<value_kind::octets, T> {
    using type = zrasn_octetstring;
};
template <class T>
struct value_object<value_kind::fixed_octets, T> {
    using type = zrasn_octetstring;
};
template <class T>
struct value_object<value_kind::record, T> {
    using type = typename record<T>::binding_type;
};

// set_object gives the object of a value what a structure holds at `value`, get_object stores what the object carries
// in a place; for every kind but records, which have fields of their own. A text that finds no memory stays null, and
// that is no failure; a stored text and octets that find none throw zr_asn_memexception, for `module` where they are
// mandatory octets. A version that was read stays.
void set_object(zr_asn_object& object, const field& field, const void* structure, const void* value);
void get_object(zr_asn_object& object, const field& field, void* structure, void* where, const char* module);

}  // namespace zr
