// Whether the texts of an encoding are ASCII: then they are the same in the local code set and in UTF-8.
//
// It goes from header to header and steps over all that holds no text. What it finds is good only for octets in the
// form that the library writes, which the quick readers judge.
#pragma once

#include "asn1/ascii.h"
#include "asn1/codec/quick_reader.h"
#include "asn1/codec/shape.h"

namespace zr {

// Whether a record holds texts, or what it embeds does.
template <class S>
constexpr bool has_texts();
template <class F>
constexpr bool has_texts_in_field() {
    if constexpr (F::value == value_kind::record && !F::is_own_list) {
        return has_texts<typename F::value_type>();
    } else {
        return F::value == value_kind::text;
    }
}
template <class S, size_t... I>
constexpr bool has_texts_in_fields(std::index_sequence<I...>) {
    return (has_texts_in_field<field_at<S, I>>() || ...);
}
template <class S>
constexpr bool has_texts() {
    return has_texts_in_fields<S>(field_indices<S>());
}

// Each returns where the value ends; null when a text is not ASCII, and for some other forms of octets.
ZR_INLINE octet_position pass_any(octet_position at, octet_position end) {
    octet_position stop = nullptr;
    return at != end && quick_contents(at, end, at[0], stop) != nullptr ? stop : nullptr;
}
ZR_INLINE octet_position pass_ascii_text(octet_position at, octet_position end) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_utf8_string, stop);
    return at != nullptr && is_ascii(at, static_cast<size_t>(stop - at)) ? stop : nullptr;
}
template <class S>
octet_position pass_ascii_record(octet_position at, octet_position end);

template <class F>
ZR_INLINE octet_position pass_ascii_value(octet_position at, octet_position end) {
    if constexpr (F::value == value_kind::text) return pass_ascii_text(at, end);
    if constexpr (F::value == value_kind::record && has_texts_in_field<F>())
        return pass_ascii_record<typename F::value_type>(at, end);
    return pass_any(at, end);
}

template <class F>
ZR_INLINE octet_position pass_ascii_field(octet_position at, octet_position end) {
    if constexpr (F::held == holding::one) {
        return pass_ascii_value<F>(at, end);
    } else if constexpr (F::held == holding::optional) {
        return at == end || at[0] != id_sequence ? at : pass_ascii_value<F>(at, end);
    } else {
        octet_position stop = nullptr;
        at = quick_contents(at, end, id_sequence, stop);
        if constexpr (!has_texts_in_field<F>()) return at != nullptr ? stop : nullptr;
        while (at != nullptr && at != stop)
            at = at[0] == id_null ? pass_any(at, stop) : pass_ascii_value<F>(at, stop);
        return at;
    }
}

// How many fields from the first on have to be looked at.
template <class S, size_t Count>
constexpr size_t fields_up_to_text() {
    if constexpr (Count == 0) {
        return 0;
    } else if constexpr (has_texts_in_field<field_at<S, Count - 1>>()) {
        return Count;
    } else {
        return fields_up_to_text<S, Count - 1>();
    }
}
template <class S, size_t... I>
ZR_INLINE octet_position pass_ascii_fields(octet_position at, octet_position end, std::index_sequence<I...>) {
    static_cast<void>((((at = pass_ascii_field<field_at<S, I>>(at, end)) != nullptr) && ...));
    return at;
}

// The records in a record that contains itself are passed as they lie one behind the other, whatever encloses which.
template <class S>
[[gnu::noinline]] octet_position pass_ascii_levels(octet_position at, octet_position end) {
    octet_position stop = nullptr;
    octet_position inner = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    while (at != nullptr) {
        at = pass_ascii_fields<S>(at, stop, std::make_index_sequence<own_list<S>::index>());
        if (at == nullptr) return nullptr;
        at = quick_contents(at, stop, id_sequence, inner);
        if (at == stop) return stop;
        if (at != nullptr) at = quick_contents(at, stop, id_sequence, inner);
    }
    return nullptr;
}
template <class S>
[[gnu::noinline]] octet_position pass_ascii_outlined(octet_position at, octet_position end) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    if (at == nullptr) return nullptr;
    at = pass_ascii_fields<S>(at, stop, std::make_index_sequence<fields_up_to_text<S, field_count_of<S>>()>());
    return at != nullptr ? stop : nullptr;
}
template <class S>
ZR_INLINE octet_position pass_ascii_record(octet_position at, octet_position end) {
    if constexpr (contains_itself<S>()) {
        return pass_ascii_levels<S>(at, end);
    } else {
        return pass_ascii_outlined<S>(at, end);
    }
}

// The record's function (record_codec::texts_are_ascii); null for one without texts.
template <class S>
bool texts_are_ascii(octet_position at, octet_position end) {
    return pass_ascii_record<S>(at, end) != nullptr;
}

}  // namespace zr
