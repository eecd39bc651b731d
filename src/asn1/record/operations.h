// Copying and comparing structures of any record, to any depth, by the same lists of fields as everything else. A null
// text is an empty one and a null array one without elements, so structures are equal exactly when their encodings are.
//
// All return 0, or 275062885 after one line on standard error: memory ended, or an array of pointers has a null
// element.
#pragma once

#include "asn1/record/record_type.h"

namespace zr {

// copy_record makes `to`, whatever it held, a copy of `from` with blocks of its own, which the record's free releases.
// Null texts stay null. When it fails `to` is all zero.
[[nodiscard]] ZR_API int copy_record(const record_type& type, const void* from, void* to);

// order_records makes `order` less than 0, 0 or greater than 0 as `left` comes before, is equal to or comes behind
// `right`: by their fields in order, integers by value, texts and octets by their octets, lists by their elements. The
// shorter of two that begin alike comes first, and what is absent before what is there.
[[nodiscard]] ZR_API int order_records(const record_type& type, const void* left, const void* right, int& order);

// The same for structures of a known type.
template <class S>
[[nodiscard]] int copy(const S& from, S& to) {
    return copy_record(record<S>::type, &from, &to);
}
template <class S>
[[nodiscard]] int order(const S& left, const S& right, int& order) {
    return order_records(record<S>::type, &left, &right, order);
}
template <class S>
[[nodiscard]] int equal(const S& left, const S& right, bool& equal) {
    int order = 0;
    const int status = order_records(record<S>::type, &left, &right, order);
    equal = status == 0 && order == 0;
    return status;
}

}  // namespace zr
