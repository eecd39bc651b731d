// Encoding the leaf fields of a record: those that hold one value without lists, slots or optional records in it.
//
// Leaf fields next to each other are a run. A run asks the sink for room once, and for that its texts and byte strings
// are measured first; a run that begins with the record's first field asks for the record's header too.
#pragma once

#include "asn1/codec/values.h"

namespace zr {

// The first field of the run that field Last of S is in.
template <class S, size_t Last>
constexpr size_t first_of_run() {
    if constexpr (Last != 0) {
        if constexpr (is_leaf_field<field_at<S, Last - 1>>()) return first_of_run<S, Last - 1>();
    }
    return Last;
}
// Whether a run ends with field I of the first Count.
template <class S, size_t I, size_t Count>
constexpr bool ends_run() {
    if constexpr (I + 1 < Count) return is_leaf_field<field_at<S, I>>() && !is_leaf_field<field_at<S, I + 1>>();
    return is_leaf_field<field_at<S, I>>();
}

// How many texts and byte strings the leaf fields from First on have, as many as there are indices; what they take
// beyond the octets of those at most.
template <class S, size_t First, size_t... I>
constexpr size_t strings_in_run(std::index_sequence<I...>) {
    return (size_t{0} + ... + codec_of_value<field_at<S, First + I>>::template strings<field_at<S, First + I>>);
}
template <class S, size_t First, size_t... I>
constexpr size_t most_octets_in_run(std::index_sequence<I...>) {
    return (size_t{First == 0 ? max_header : 0} + ... +
            codec_of_value<field_at<S, First + I>>::template most<field_at<S, First + I>>);
}
template <class S>
constexpr size_t strings_in_leaf() {
    return strings_in_run<S, 0>(field_indices<S>());
}
template <class S>
constexpr size_t most_octets_in_leaf() {
    return most_octets_in_run<S, 0>(field_indices<S>());
}

// Measures the strings of the leaf fields from First on, moves `length` on behind their lengths, and returns the sum.
template <class S, size_t First, size_t... I>
ZR_INLINE uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>) {
    uint64_t sum = 0;
    ((sum += codec_of_value<field_at<S, First + I>>::template measure<field_at<S, First + I>>(in, length)), ...);
    return sum;
}

// Writes leaf fields that have room, backwards. `length` is behind their measured lengths and moves before them.
template <class F, class Sink, class S>
ZR_INLINE void write_leaf_field(Sink& sink, const S& in, const size_t*& length) {
    codec_of_value<F>::template write<F>(sink, in, length);
}
template <class Sink, class S, size_t First, size_t... I>
ZR_INLINE void write_measured(Sink& sink, const S& in, const size_t*& length, std::index_sequence<I...>) {
    (write_leaf_field<field_at<S, First + sizeof...(I) - 1 - I>>(sink, in, length), ...);
}

// Writes the run that ends with field Last. False when the sink has no room.
template <class Sink, class S, size_t Last>
ZR_INLINE bool write_run(Sink& sink, const S& in) {
    constexpr size_t first = first_of_run<S, Last>();
    constexpr auto indices = std::make_index_sequence<Last + 1 - first>();
    size_t lengths[strings_in_run<S, first>(indices) + 1];
    size_t* behind = lengths;
    if (!sink.room(measure_run<S, first>(in, behind, indices) + most_octets_in_run<S, first>(indices))) return false;
    const size_t* length = behind;
    write_measured<Sink, S, first>(sink, in, length, indices);
    return true;
}

}  // namespace zr
