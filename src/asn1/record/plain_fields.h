// Encoding the fields that are neither lists nor optional.
#pragma once

#include "asn1/record/shape.h"
#include "asn1/record/writer.h"

namespace zr {

// Before octets are written the sink is asked for room: once for a run of plain fields, whose texts are measured first.
// A record's header needs no room of its own when its first field is plain.
template <class S, size_t I>
constexpr bool is_plain_field = is_leaf_field<field_type<S, I>>();

// Field `last` of S and those before it, down to the first of the same run.
template <class S, size_t Last>
constexpr size_t first_of_run() {
    if constexpr (Last != 0) {
        if constexpr (is_plain_field<S, Last - 1>) return first_of_run<S, Last - 1>();
    }
    return Last;
}
// Whether a run of plain fields ends with field I.
template <class S, size_t I, size_t Count>
constexpr bool ends_run() {
    if constexpr (I + 1 < Count) return is_plain_field<S, I> && !is_plain_field<S, I + 1>;
    return is_plain_field<S, I>;
}

// How many texts and byte strings a plain field has; what it takes beyond their octets at most.
template <class S>
constexpr size_t strings_in_leaf();
template <class S>
constexpr size_t most_octets_in_leaf();
template <class Field>
constexpr size_t strings_in() {
    if constexpr (Field::kind == field_kind::nested) return strings_in_leaf<typename Field::value_type>();
    return Field::kind == field_kind::text || Field::kind == field_kind::octets ? 1 : 0;
}
template <class Field>
constexpr size_t most_octets_in() {
    if constexpr (Field::kind == field_kind::nested) return most_octets_in_leaf<typename Field::value_type>();
    if constexpr (Field::kind == field_kind::integer) return max_integer;
    return max_header + Field::size;
}
// The same of the fields from First on, as many as there are indices.
template <class S, size_t First, size_t... I>
constexpr size_t strings_in_run(std::index_sequence<I...>) {
    return (size_t{0} + ... + strings_in<field_type<S, First + I>>());
}
template <class S, size_t First, size_t... I>
constexpr size_t most_octets_in_run(std::index_sequence<I...>) {
    return (size_t{First == 0 ? max_header : 0} + ... + most_octets_in<field_type<S, First + I>>());
}
template <class S>
constexpr size_t strings_in_leaf() {
    return strings_in_run<S, 0>(std::make_index_sequence<field_count_of<S>>());
}
template <class S>
constexpr size_t most_octets_in_leaf() {
    return most_octets_in_run<S, 0>(std::make_index_sequence<field_count_of<S>>());
}

inline size_t text_length(const char* text) { return text != nullptr ? std::strlen(text) : 0; }

// Measures the texts and byte strings of a plain field, moves `length` on behind them, and returns the sum.
template <class S, size_t First, size_t... I>
ZR_INLINE uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>);
template <class S, size_t I>
ZR_INLINE uint64_t measure_field(const S& in, size_t*& length) {
    using F = field_type<S, I>;
    if constexpr (F::kind == field_kind::nested) {
        using T = typename F::value_type;
        return measure_run<T, 0>(member_at<T>(in, field_offset<S, I>), length,
                                 std::make_index_sequence<field_count_of<T>>());
    } else if constexpr (F::kind == field_kind::text) {
        return *length++ = text_length(member_at<char*>(in, field_offset<S, I>));
    } else if constexpr (F::kind == field_kind::octets) {
        return *length++ = member_at<void*>(in, field_offset<S, I>) != nullptr
                               ? member_at<uint32_t>(in, field_count_offset<S, I>)
                               : 0;
    } else {
        return 0;
    }
}
template <class S, size_t First, size_t... I>
ZR_INLINE uint64_t measure_run(const S& in, size_t*& length, std::index_sequence<I...>) {
    uint64_t sum = 0;
    ((sum += measure_field<S, First + I>(in, length)), ...);
    return sum;
}

// Writes a plain field that has room. `length` is behind its measured lengths and moves before them.
template <class Sink, class S, size_t First, size_t... I>
ZR_INLINE void write_run(Sink& sink, const S& in, const size_t*& length, std::index_sequence<I...>);
template <class Sink, class S, size_t I>
ZR_INLINE void write_plain_field(Sink& sink, const S& in, const size_t*& length) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t offset = field_offset<S, I>;
    if constexpr (F::kind == field_kind::integer) {
        sink.integer(static_cast<int32_t>(member_at<T>(in, offset)));
    } else if constexpr (F::kind == field_kind::text) {
        sink.string(id_utf8_string, member_at<char*>(in, offset), *--length);
    } else if constexpr (F::kind == field_kind::octets) {
        sink.string(id_octet_string, member_at<unsigned char*>(in, offset), *--length);
    } else if constexpr (F::kind == field_kind::fixed_octets) {
        sink.string(id_octet_string, &member_at<unsigned char>(in, offset), F::size);
    } else {
        const auto end = sink.position();
        write_run<Sink, T, 0>(sink, member_at<T>(in, offset), length, std::make_index_sequence<field_count_of<T>>());
        sink.header(id_sequence, sink.since(end));
    }
}
template <class Sink, class S, size_t First, size_t... I>
ZR_INLINE void write_run(Sink& sink, const S& in, const size_t*& length, std::index_sequence<I...>) {
    (write_plain_field<Sink, S, First + sizeof...(I) - 1 - I>(sink, in, length), ...);
}

// The run of plain fields that ends with field Last.
template <class Sink, class S, size_t Last>
ZR_INLINE bool write_plain_fields(Sink& sink, const S& in) {
    constexpr size_t first = first_of_run<S, Last>();
    constexpr auto indices = std::make_index_sequence<Last + 1 - first>();
    size_t lengths[strings_in_run<S, first>(indices) + 1];
    size_t* behind = lengths;
    if (!sink.room(measure_run<S, first>(in, behind, indices) + most_octets_in_run<S, first>(indices))) return false;
    const size_t* length = behind;
    write_run<Sink, S, first>(sink, in, length, indices);
    return true;
}

}  // namespace zr
