// Encoding a structure without an object tree: field by field, last field first, into one block.
#pragma once

#include "asn1/record/plain_fields.h"
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
            sink.list_text(texts[i], length);
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

// Sums stop where an encoding is too long whatever else it holds.
inline uint32_t capped(uint64_t octets) { return octets < UINT32_MAX ? static_cast<uint32_t>(octets) : UINT32_MAX; }

// The octets of a record that contains itself. Each is measured when it is come to, while its list is on the way from
// memory; going back needs only what is on the work list.
template <class S>
ZR_INLINE uint64_t count_nested_records(const S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    struct entry {
        const S* node;
        uint32_t left;    // elements that are still to be counted
        uint32_t fields;  // octets of the fields before the list, capped
        uint32_t list;    // octets of the elements that have been counted, capped
    };
    work_list<entry> open;
    for (const S* node = &root;;) {
        counter fields;
        write_fields(fields, *node, std::make_index_sequence<own>());
        const uint32_t count = list_count<S, own>(*node);
        if (count != 0) {
            open.push({node, count - 1, capped(fields.done()), 0}, record<S>::module);
            node = &list_element<S, own>(*node, count - 1);
            continue;
        }
        // Nothing below it: the node is complete, and each whose last element it is.
        uint64_t octets = with_header(with_header(0) + fields.done());
        for (;; open.pop()) {
            if (open.empty()) return octets;
            entry& top = open.top();
            top.list = capped(top.list + octets);
            if (top.left != 0) break;
            octets = with_header(with_header(top.list) + top.fields);
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
        uint32_t left;    // elements of the node's list that are still to be written
        uint32_t behind;  // octets behind the node
    };
    const auto root_end = sink.position();
    work_list<entry> open;
    for (const S* node = &root;;) {
        const uint32_t count = list_count<S, own>(*node);
        if (count != 0) {
            open.push({node, count - 1, static_cast<uint32_t>(sink.since(root_end))}, record<S>::module);
            node = &list_element<S, own>(*node, count - 1);
            // What was made next often lies behind it: lines that are asked for one after the other come early.
            __builtin_prefetch(reinterpret_cast<const unsigned char*>(node) + 64);
            __builtin_prefetch(reinterpret_cast<const unsigned char*>(node) + 128);
            continue;
        }
        // Nothing below it: the node is written, and each that is complete with it.
        for (auto end = sink.position();;) {
            if (!sink.room(max_header)) return;
            sink.header(id_sequence, sink.since(end));
            if (!write_fields(sink, *node, std::make_index_sequence<own>())) return;
            if (!write_record_header<S>(sink, end)) return;
            if (open.empty()) return;
            if (open.top().left != 0) break;
            node = open.top().node;
            end = root_end - open.top().behind;
            open.pop();
        }
        node = &list_element<S, own>(*open.top().node, --open.top().left);
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
