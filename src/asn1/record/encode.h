// Encoding a structure without an object tree: field by field, last field first, into one block.
#pragma once

#include <cstdlib>

#include "asn1/record/shape.h"
#include "asn1/record/work_list.h"
#include "asn1/record/writer.h"

namespace zr {

// write_record writes one structure as SEQUENCE before what the sink has. False when the sink has failed. Throws
// zr_asn_memexception ("ASN: Memory error") for a null element in an array of pointers.
//
// Everything is inlined into one function for each record with lists.
template <class Sink, class S>
bool write_record(Sink& sink, const S& in);

// Before octets are written the sink is asked for room: once for a run of plain fields, whose texts are measured first.
// A record's header needs no room of its own when its first field is plain.
template <class Field>
constexpr bool is_plain() {
    if constexpr (Field::kind == field_kind::nested) return is_leaf<typename Field::value_type>();
    return !is_list(Field::kind) && Field::kind != field_kind::slots && Field::kind != field_kind::optional_nested;
}
template <class S, size_t I>
constexpr bool is_plain_field = is_plain<field_type<S, I>>();

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
    return (uint64_t{0} + ... + measure_field<S, First + I>(in, length));
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

// Element i of a list of records.
template <class S, size_t I>
const auto& list_element(const S& in, uint32_t i) {
    using F = field_type<S, I>;
    using R = typename F::value_type;
    if constexpr (F::kind == field_kind::list_of_pointers) {
        const R* element = member_at<R**>(in, field_offset<S, I>)[i];
        if (element == nullptr) throw_out_of_memory("ASN: Memory error", record<S>::module);
        return *element;
    } else {
        return member_at<R*>(in, field_offset<S, I>)[i];
    }
}

// How many elements a list has; a null array counts as empty.
template <class S, size_t I>
uint32_t list_count(const S& in) {
    if (member_at<void*>(in, field_offset<S, I>) == nullptr) return 0;
    return member_at<typename field_type<S, I>::count_type>(in, field_count_offset<S, I>);
}

template <class Sink, class S, size_t I>
ZR_INLINE bool write_list(Sink& sink, const S& in) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    const auto end = sink.position();
    const uint32_t count = list_count<S, I>(in);
    if constexpr (F::kind == field_kind::list_of_texts) {
        char* const* texts = member_at<char**>(in, field_offset<S, I>);
        for (size_t i = count; i-- != 0;) {
            const size_t length = text_length(texts[i]);
            if (!sink.room(uint64_t{length} + max_header)) return false;
            sink.string(id_utf8_string, texts[i], length);
        }
    } else if constexpr (F::kind == field_kind::list_of_integers) {
        if (!sink.integers(member_at<T*>(in, field_offset<S, I>), count)) return false;
    } else {
        for (uint32_t i = count; i-- != 0;)
            if (!write_record(sink, list_element<S, I>(in, i))) return false;
    }
    if (!sink.room(max_header)) return false;
    sink.header(id_sequence, sink.since(end));
    return true;
}

// Empty slots before the last used one are written as NULL, so that the positions survive.
template <class Sink, class S, size_t I>
ZR_INLINE bool write_slots(Sink& sink, const S& in) {
    using R = typename field_type<S, I>::value_type;
    R* const* slots = &member_at<R*>(in, field_offset<S, I>);
    const auto end = sink.position();
    bool used = false;
    for (uint32_t i = field_size<S, I>; i-- != 0;) {
        if (slots[i] != nullptr) {
            used = true;
            if (!write_record(sink, *slots[i])) return false;
        } else if (used) {
            if (!sink.room(max_header)) return false;
            sink.octet_pair(id_null, 0);
        }
    }
    if (!sink.room(max_header)) return false;
    sink.header(id_sequence, sink.since(end));
    return true;
}

// Writes field I, and with the last of a run of plain fields the run.
template <class Sink, class S, size_t I, size_t Count>
ZR_INLINE bool write_field(Sink& sink, const S& in) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    if constexpr (ends_run<S, I, Count>()) {
        return write_plain_fields<Sink, S, I>(sink, in);
    } else if constexpr (F::kind == field_kind::optional_nested) {
        const T* nested = member_at<T*>(in, field_offset<S, I>);
        return nested == nullptr || write_record(sink, *nested);
    } else if constexpr (F::kind == field_kind::slots) {
        return write_slots<Sink, S, I>(sink, in);
    } else if constexpr (is_list(F::kind)) {
        return write_list<Sink, S, I>(sink, in);
    } else if constexpr (!is_plain_field<S, I>) {
        return write_record(sink, member_at<T>(in, field_offset<S, I>));
    }
    return true;
}

// The first sizeof...(I) fields, backwards.
template <class Sink, class S, size_t... I>
ZR_INLINE bool write_fields(Sink& sink, const S& in, std::index_sequence<I...>) {
    return (write_field<Sink, S, sizeof...(I) - 1 - I, sizeof...(I)>(sink, in) && ...);
}

// The header of a record that ends at `end`.
template <class S, class Sink>
ZR_INLINE bool write_record_header(Sink& sink, typename Sink::mark end) {
    if constexpr (!is_plain_field<S, 0>) {
        if (!sink.room(max_header)) return false;
    }
    sink.header(id_sequence, sink.since(end));
    return true;
}

// The octets of a record that contains itself. Each is measured when it is come to, while its list is on the way from
// memory; going back needs only what is on the work list.
template <class S>
ZR_INLINE uint64_t count_nested_records(const S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    struct entry {
        const S* node;
        uint64_t fields;  // octets of the fields before the list
        uint64_t list;    // octets of the elements that have been counted
        uint32_t left;    // elements that are still to be counted
    };
    work_list<entry> open;
    for (const S* node = &root;;) {
        counter fields;
        write_fields(fields, *node, std::make_index_sequence<own>());
        const uint32_t count = list_count<S, own>(*node);
        if (count != 0) {
            open.push({node, fields.done(), 0, count}, record<S>::module);
        } else {
            // Nothing below it: the node is complete, and each whose last element it is.
            uint64_t octets = with_header(with_header(0) + fields.done());
            for (;; open.pop()) {
                if (open.empty()) return octets;
                open.top().list += octets;
                if (open.top().left != 0) break;
                octets = with_header(with_header(open.top().list) + open.top().fields);
            }
        }
        node = &list_element<S, own>(*open.top().node, --open.top().left);
    }
}

// A record that contains itself: the last element of the list first, each with all that is below it.
template <class S>
ZR_INLINE void write_nested_records(writer& sink, const S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    struct entry {
        const S* node;
        uint32_t left;  // elements of the node's list that are still to be written
        writer::mark end;
    };
    work_list<entry> open;
    const S* node = &root;
    for (;;) {
        const uint32_t count = list_count<S, own>(*node);
        auto end = sink.position();
        if (count != 0) {
            open.push({node, count, end}, record<S>::module);
        } else {
            // Nothing below it: the node is written, and each that is complete with it.
            for (;;) {
                if (!sink.room(max_header)) return;
                sink.header(id_sequence, sink.since(end));
                if (!write_fields(sink, *node, std::make_index_sequence<own>())) return;
                if (!write_record_header<S>(sink, end)) return;
                if (open.empty()) return;
                if (open.top().left != 0) break;
                node = open.top().node;
                end = open.top().end;
                open.pop();
            }
        }
        entry& top = open.top();
        node = &list_element<S, own>(*top.node, --top.left);
    }
}

template <class Sink, class S>
ZR_INLINE bool write_plain_record(Sink& sink, const S& in) {
    const auto end = sink.position();
    return write_fields(sink, in, std::make_index_sequence<field_count_of<S>>()) && write_record_header<S>(sink, end);
}

// The record's one function for a kind of sink, on an untyped structure.
template <class Sink, class S>
[[gnu::noinline]] typename Sink::progress write_outlined_record(Sink sink, const void* in) {
    const S& structure = *static_cast<const S*>(in);
    if constexpr (!contains_itself<S>()) {
        write_plain_record(sink, structure);
    } else if constexpr (std::is_same_v<Sink, counter>) {
        return sink.done() + count_nested_records(structure);
    } else {
        write_nested_records(sink, structure);
    }
    return sink.done();
}

template <class Sink, class S>
ZR_INLINE bool write_record(Sink& sink, const S& in) {
    if constexpr (is_leaf<S>()) return write_plain_record(sink, in);
    sink.go_on(write_outlined_record<Sink, S>(sink, &in));
    return !sink.failed();
}

}  // namespace zr
