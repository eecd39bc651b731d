// Encoding a structure without an object tree: field by field, last field first, into one block.
#pragma once

#include "asn1/codec/runs.h"
#include "asn1/codec/work_list.h"

namespace zr {

// write_record writes one structure as SEQUENCE before what the sink has. False when the sink has failed. Throws
// zr_asn_memexception ("ASN: Memory error") for a null element in an array of pointers.
//
// Everything is inlined into one function for each record that is no leaf.
template <class Sink, class S>
bool write_record(Sink& sink, const S& in);

// Element i of a list of records.
template <class F, class S>
const auto& list_element(const S& in, uint32_t i) {
    const auto& where = array_of<F>(in)[i];
    if constexpr (is_by_pointer(F::value, F::held)) {
        if (where == nullptr) throw_out_of_memory("ASN: Memory error", record<S>::module);
        return *where;
    } else {
        return where;
    }
}

template <class F, class Sink, class S>
ZR_INLINE bool write_elements(Sink& sink, const S& in) {
    const uint32_t count = element_count<F>(in);
    if constexpr (F::value == value_kind::integer) {
        return sink.integers(array_of<F>(in), count);
    } else if constexpr (F::value == value_kind::text) {
        const auto* texts = array_of<F>(in);
        for (size_t i = count; i-- != 0;) {
            const size_t length = text_length(texts[i]);
            if (!sink.room(uint64_t{length} + max_header)) return false;
            sink.list_text(texts[i], length);
        }
        return true;
    } else {
        static_assert(F::value == value_kind::record || unknown_kind<F>);
        for (uint32_t i = count; i-- != 0;)
            if (!write_record(sink, list_element<F>(in, i))) return false;
        return true;
    }
}

// Empty slots before the last used one are written as NULL, so that the positions survive.
template <class F, class Sink, class S>
ZR_INLINE bool write_slots(Sink& sink, const S& in) {
    const auto* slots = &member_of<F>(in);
    bool used = false;
    for (uint32_t i = F::size; i-- != 0;) {
        if (slots[i] != nullptr) {
            used = true;
            if (!write_record(sink, *slots[i])) return false;
        } else if (used) {
            if (!sink.room(max_header)) return false;
            sink.octet_pair(id_null, 0);
        }
    }
    return true;
}

// The header of a SEQUENCE that ends at `end`.
template <class Sink>
ZR_INLINE bool write_sequence_header(Sink& sink, typename Sink::mark end) {
    if (!sink.room(max_header)) return false;
    sink.header(id_sequence, sink.since(end));
    return true;
}

// Writes field I of the first Count; with the last field of a run the whole run.
template <class Sink, class S, size_t I, size_t Count>
ZR_INLINE bool write_field(Sink& sink, const S& in) {
    using F = field_at<S, I>;
    if constexpr (ends_run<S, I, Count>()) {
        return write_run<Sink, S, I>(sink, in);
    } else if constexpr (is_leaf_field<F>()) {
        return true;  // in a run that ends behind it
    } else if constexpr (F::held == holding::one) {
        return write_record(sink, member_of<F>(in));
    } else if constexpr (F::held == holding::optional) {
        return member_of<F>(in) == nullptr || write_record(sink, *member_of<F>(in));
    } else if constexpr (F::held == holding::slots) {
        const auto end = sink.position();
        return write_slots<F>(sink, in) && write_sequence_header(sink, end);
    } else {
        static_assert(is_list(F::held) || unknown_kind<F>);
        const auto end = sink.position();
        return write_elements<F>(sink, in) && write_sequence_header(sink, end);
    }
}

// The first sizeof...(I) fields, backwards.
template <class Sink, class S, size_t... I>
ZR_INLINE bool write_fields(Sink& sink, const S& in, std::index_sequence<I...>) {
    return (write_field<Sink, S, sizeof...(I) - 1 - I, sizeof...(I)>(sink, in) && ...);
}

// The header of a record that ends at `end`. A run at the record's beginning has asked for its room.
template <class S, class Sink>
ZR_INLINE bool write_record_header(Sink& sink, typename Sink::mark end) {
    if constexpr (!is_leaf_field<field_at<S, 0>>()) return write_sequence_header(sink, end);
    sink.header(id_sequence, sink.since(end));
    return true;
}

// Sums stop where an encoding is too long whatever else it holds.
inline uint32_t capped(uint64_t octets) { return octets < UINT32_MAX ? static_cast<uint32_t>(octets) : UINT32_MAX; }

// The fields of a record that contains itself but for the list of itself.
template <class S>
using fields_before_own_list = std::make_index_sequence<field_count_of<S> - 1>;

// The octets of a record that contains itself. Each is measured when it is come to, while its list is on the way from
// memory; going back needs only what is on the work list.
template <class S>
ZR_INLINE uint64_t count_levels(const S& root) {
    using own = own_list<S>;
    struct level {
        const S* node;
        uint32_t left;    // elements that are still to be counted
        uint32_t fields;  // octets of the fields before the list, capped
        uint32_t list;    // octets of the elements that have been counted, capped
    };
    work_list<level> open;
    for (const S* node = &root;;) {
        counter fields;
        write_fields(fields, *node, fields_before_own_list<S>());
        const uint32_t count = element_count<own>(*node);
        if (count != 0) {
            open.push({node, count - 1, capped(fields.done()), 0}, record<S>::module);
            node = &list_element<own>(*node, count - 1);
            continue;
        }
        // Nothing below it: the node is complete, and each whose last element it is.
        uint64_t octets = with_header(with_header(0) + fields.done());
        for (;; open.pop()) {
            if (open.empty()) return octets;
            level& top = open.top();
            top.list = capped(top.list + octets);
            if (top.left != 0) break;
            octets = with_header(with_header(top.list) + top.fields);
        }
        node = &list_element<own>(*open.top().node, --open.top().left);
    }
}

// A record that contains itself: the last element of the list first, each with all that is below it.
template <class Sink, class S>
ZR_INLINE void write_levels(Sink& sink, const S& root) {
    using own = own_list<S>;
    struct level {
        const S* node;
        uint32_t left;    // elements of the node's list that are still to be written
        uint32_t behind;  // octets behind the node
    };
    const auto root_end = sink.position();
    work_list<level> open;
    for (const S* node = &root;;) {
        const uint32_t count = element_count<own>(*node);
        if (count != 0) {
            open.push({node, count - 1, static_cast<uint32_t>(sink.since(root_end))}, record<S>::module);
            node = &list_element<own>(*node, count - 1);
            // What was made next often lies behind it: lines that are asked for one after the other come early.
            __builtin_prefetch(reinterpret_cast<const unsigned char*>(node) + 64);
            __builtin_prefetch(reinterpret_cast<const unsigned char*>(node) + 128);
            continue;
        }
        // Nothing below it: the node is written, and each that is complete with it.
        for (auto end = sink.position();;) {
            if (!write_sequence_header(sink, end)) return;
            if (!write_fields(sink, *node, fields_before_own_list<S>())) return;
            if (!write_record_header<S>(sink, end)) return;
            if (open.empty()) return;
            if (open.top().left != 0) break;
            node = open.top().node;
            end = root_end - open.top().behind;
            open.pop();
        }
        node = &list_element<own>(*open.top().node, --open.top().left);
    }
}

// How many levels follow a record whose lists of itself have one element each, up to `most`.
template <class S>
size_t count_chain(const void* in, size_t most) {
    using own = own_list<S>;
    const auto* node = static_cast<const S*>(in);
    size_t levels = 0;
    for (; levels != most && element_count<own>(*node) == 1; ++levels) {
        const auto& where = array_of<own>(*node)[0];
        if constexpr (is_by_pointer(own::value, own::held)) {
            if (where == nullptr) break;
            node = where;
        } else {
            node = &where;
        }
    }
    return levels;
}

// Writes a record that does not contain itself, where it is used.
template <class Sink, class S>
ZR_INLINE bool write_inlined_record(Sink& sink, const S& in) {
    const auto end = sink.position();
    return write_fields(sink, in, field_indices<S>()) && write_record_header<S>(sink, end);
}

// The record's one function for a kind of sink, on an untyped structure.
template <class Sink, class S>
[[gnu::noinline]] typename Sink::progress write_outlined_record(Sink sink, const void* in) {
    const S& structure = *static_cast<const S*>(in);
    if constexpr (!contains_itself<S>()) {
        write_inlined_record(sink, structure);
    } else if constexpr (std::is_same_v<Sink, counter>) {
        return sink.done() + count_levels(structure);
    } else {
        write_levels(sink, structure);
    }
    return sink.done();
}

// What a record is written by: one without texts is the same for all writers.
template <class Sink, class S>
using sink_of = std::conditional_t<std::is_base_of_v<writer, Sink> && !has_texts<S>(), writer, Sink>;

template <class Sink, class S>
ZR_INLINE bool write_record(Sink& sink, const S& in) {
    if constexpr (is_leaf<S>()) return write_inlined_record(sink, in);
    sink.go_on(write_outlined_record<sink_of<Sink, S>, S>(sink, &in));
    return !sink.failed();
}

}  // namespace zr
