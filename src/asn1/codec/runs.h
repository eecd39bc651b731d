// Encoding the leaf fields of a record: those that hold one value without lists, slots or optional records in it.
//
// Leaf fields next to each other are a run. A run asks the sink for room once, and for that its texts and byte strings
// are measured first; a run that begins with the record's first field asks for the record's header too.
#pragma once

#include "asn1/codec/shape.h"
#include "asn1/codec/writer.h"

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

// How many texts and byte strings a leaf field has; what it takes beyond their octets at most.
template <class S>
constexpr size_t strings_in_leaf();
template <class S>
constexpr size_t most_octets_in_leaf();
template <class F>
constexpr size_t strings_in() {
    if constexpr (F::value == value_kind::record) return strings_in_leaf<typename F::value_type>();
    return F::value == value_kind::text || F::value == value_kind::octets ? 1 : 0;
}
template <class F>
constexpr size_t most_octets_in() {
    if constexpr (F::value == value_kind::record) return most_octets_in_leaf<typename F::value_type>();
    if constexpr (F::value == value_kind::integer) return max_integer;
    return max_header + F::size;
}
// The same of the fields from First on, as many as there are indices.
template <class S, size_t First, size_t... I>
constexpr size_t strings_in_run(std::index_sequence<I...>) {
    return (size_t{0} + ... + strings_in<field_at<S, First + I>>());
}
template <class S, size_t First, size_t... I>
constexpr size_t most_octets_in_run(std::index_sequence<I...>) {
    return (size_t{First == 0 ? max_header : 0} + ... + most_octets_in<field_at<S, First + I>>());
}
template <class S>
constexpr size_t strings_in_leaf() {
    return strings_in_run<S, 0>(field_indices<S>());
}
template <class S>
constexpr size_t most_octets_in_leaf() {
    return most_octets_in_run<S, 0>(field_indices<S>());
}

inline size_t text_length(const char* text) { return text != nullptr ? std::strlen(text) : 0; }

// Measures the texts and byte strings of a leaf field, moves `length` on behind them, and returns the sum.
template <class S, size_t First, size_t... I>
ZR_INLINE uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>);
template <class F, class S>
ZR_INLINE uint64_t measure_field(const S& in, size_t*& length) {
    if constexpr (F::value == value_kind::record) {
        return measure_run<typename F::value_type, 0>(member_of<F>(in), length,
                                                      field_indices<typename F::value_type>());
    } else if constexpr (F::value == value_kind::text) {
        return *length++ = text_length(member_of<F>(in));
    } else if constexpr (F::value == value_kind::octets) {
        return *length++ = member_of<F>(in) != nullptr ? count_of<F>(in) : 0;
    } else {
        static_assert(F::value == value_kind::integer || F::value == value_kind::fixed_octets || unknown_kind<F>);
        return 0;
    }
}
template <class S, size_t First, size_t... I>
ZR_INLINE uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>) {
    uint64_t sum = 0;
    ((sum += measure_field<field_at<S, First + I>>(in, length)), ...);
    return sum;
}

// Writes a leaf field that has room. `length` is behind its measured lengths and moves before them.
template <class Sink, class S, size_t First, size_t... I>
ZR_INLINE void write_measured(Sink& sink, const S& in, const size_t*& length, std::index_sequence<I...>);
template <class F, class Sink, class S>
ZR_INLINE void write_leaf_field(Sink& sink, const S& in, const size_t*& length) {
    if constexpr (F::value == value_kind::integer) {
        sink.integer(static_cast<int32_t>(member_of<F>(in)));
    } else if constexpr (F::value == value_kind::text) {
        sink.string(id_utf8_string, member_of<F>(in), *--length);
    } else if constexpr (F::value == value_kind::octets) {
        sink.string(id_octet_string, member_of<F>(in), *--length);
    } else if constexpr (F::value == value_kind::fixed_octets) {
        sink.string(id_octet_string, member_of<F>(in), F::size);
    } else {
        static_assert(F::value == value_kind::record || unknown_kind<F>);
        const auto end = sink.position();
        write_measured<Sink, typename F::value_type, 0>(sink, member_of<F>(in), length,
                                                        field_indices<typename F::value_type>());
        sink.header(id_sequence, sink.since(end));
    }
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
