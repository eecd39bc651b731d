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

// The octets that a record's headers, integers and fixed byte strings take at most: what one test of the room covers.
template <class Field>
constexpr size_t max_fixed_octets(uint32_t size) {
    switch (Field::kind) {
        case field_kind::integer:
            return max_integer;
        case field_kind::fixed_octets:
            return max_header + size;
        case field_kind::nested:
        case field_kind::optional_nested:
            return 0;
        default:
            return max_header;
    }
}
template <class S, size_t... I>
constexpr size_t sum_fixed_octets(std::index_sequence<I...>) {
    return (max_header + ... + max_fixed_octets<field_type<S, I>>(field_size<S, I>));
}
template <class S>
constexpr size_t fixed_octets_of = sum_fixed_octets<S>(std::make_index_sequence<field_count_of<S>>());

template <class Sink>
ZR_INLINE bool write_octets(Sink& sink, unsigned char identifier, const void* data, size_t length, size_t reserve) {
    if (!sink.room(length, reserve)) return false;
    sink.octets(data, length);
    sink.header(identifier, length);
    return true;
}

template <class Sink>
ZR_INLINE bool write_text(Sink& sink, const char* text, size_t reserve) {
    return write_octets(sink, id_utf8_string, text, text != nullptr ? std::strlen(text) : 0, reserve);
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
    constexpr size_t reserve = fixed_octets_of<S>;
    const auto end = sink.position();
    for (uint32_t i = list_count<S, I>(in); i-- != 0;) {
        if constexpr (F::kind == field_kind::list_of_texts) {
            if (!write_text(sink, member_at<char**>(in, field_offset<S, I>)[i], reserve)) return false;
        } else if constexpr (F::kind == field_kind::list_of_integers) {
            if (!sink.room(max_integer)) return false;
            sink.integer(static_cast<int32_t>(member_at<T*>(in, field_offset<S, I>)[i]));
        } else {
            if (!write_record(sink, list_element<S, I>(in, i))) return false;
        }
    }
    if (!sink.room(reserve)) return false;
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
    if (!sink.room(fixed_octets_of<S>)) return false;
    sink.header(id_sequence, sink.since(end));
    return true;
}

template <class Sink, class S, size_t I>
ZR_INLINE bool write_field(Sink& sink, const S& in) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t offset = field_offset<S, I>;
    constexpr size_t reserve = fixed_octets_of<S>;
    if constexpr (F::kind == field_kind::integer) {
        sink.integer(static_cast<int32_t>(member_at<T>(in, offset)));
        return true;
    } else if constexpr (F::kind == field_kind::text) {
        return write_text(sink, member_at<char*>(in, offset), reserve);
    } else if constexpr (F::kind == field_kind::octets) {
        const unsigned char* data = member_at<unsigned char*>(in, offset);
        const uint32_t length = data != nullptr ? member_at<uint32_t>(in, field_count_offset<S, I>) : 0;
        return write_octets(sink, id_octet_string, data, length, reserve);
    } else if constexpr (F::kind == field_kind::fixed_octets) {
        sink.octets(&member_at<unsigned char>(in, offset), field_size<S, I>);
        sink.header(id_octet_string, field_size<S, I>);
        return true;
    } else if constexpr (F::kind == field_kind::nested) {
        return write_record(sink, member_at<T>(in, offset)) && sink.room(reserve);
    } else if constexpr (F::kind == field_kind::optional_nested) {
        const T* nested = member_at<T*>(in, offset);
        return nested == nullptr || (write_record(sink, *nested) && sink.room(reserve));
    } else if constexpr (F::kind == field_kind::slots) {
        return write_slots<Sink, S, I>(sink, in);
    } else {
        return write_list<Sink, S, I>(sink, in);
    }
}

// The first sizeof...(I) fields, backwards.
template <class Sink, class S, size_t... I>
ZR_INLINE bool write_fields(Sink& sink, const S& in, std::index_sequence<I...>) {
    return (write_field<Sink, S, sizeof...(I) - 1 - I>(sink, in) && ...);
}

// A record that contains itself: the last element of the list first, each with all that is below it.
template <class Sink, class S>
ZR_INLINE void write_nested_records(Sink& sink, const S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    struct entry {
        const S* node;
        uint32_t left;  // elements of the node's list that are still to be written
        typename Sink::mark end;
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
                if (!sink.room(fixed_octets_of<S>)) return;
                sink.header(id_sequence, sink.since(end));
                if (!write_fields(sink, *node, std::make_index_sequence<own>())) return;
                sink.header(id_sequence, sink.since(end));
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
    if (!sink.room(fixed_octets_of<S>)) return false;
    const auto end = sink.position();
    if (!write_fields(sink, in, std::make_index_sequence<field_count_of<S>>())) return false;
    sink.header(id_sequence, sink.since(end));
    return true;
}

template <class Sink, class S>
[[gnu::noinline]] typename Sink::progress write_outlined_record(Sink sink, const S& in) {
    if constexpr (contains_itself<S>()) {
        write_nested_records(sink, in);
    } else {
        write_plain_record(sink, in);
    }
    return sink.done();
}

template <class Sink, class S>
ZR_INLINE bool write_record(Sink& sink, const S& in) {
    if constexpr (is_leaf<S>()) return write_plain_record(sink, in);
    sink.go_on(write_outlined_record(sink, in));
    return !sink.failed();
}

// Lower bounds of what an encoding takes, from counts and lengths alone: no text is measured. known_octets asks the
// structure itself, least_octets also the elements of its lists, until `enough` is reached.
template <class S, size_t... I>
uint64_t known_octets(const S& in, std::index_sequence<I...>);
template <class S>
uint64_t known_octets(const S& in) {
    return min_octets<S>() + known_octets(in, std::make_index_sequence<field_count_of<S>>());
}

// What field I takes beyond its least.
template <class S, size_t I>
ZR_INLINE uint64_t known_field_octets(const S& in) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    if constexpr (F::kind == field_kind::octets) {
        return member_at<void*>(in, field_offset<S, I>) != nullptr ? member_at<uint32_t>(in, field_count_offset<S, I>)
                                                                   : 0;
    } else if constexpr (F::kind == field_kind::nested) {
        return known_octets(member_at<T>(in, field_offset<S, I>)) - min_octets<T>();
    } else if constexpr (F::kind == field_kind::list_of_records || F::kind == field_kind::list_of_pointers) {
        return uint64_t{list_count<S, I>(in)} * min_octets<T>();
    } else if constexpr (is_list(F::kind)) {
        return uint64_t{list_count<S, I>(in)} * (F::kind == field_kind::list_of_integers ? 3 : 2);
    }
    return 0;
}
template <class S, size_t... I>
uint64_t known_octets(const S& in, std::index_sequence<I...>) {
    return (uint64_t{0} + ... + known_field_octets<S, I>(in));
}

template <class S, size_t I>
ZR_INLINE uint64_t known_element_octets(const S& in, uint64_t enough) {
    using F = field_type<S, I>;
    uint64_t sum = 0;
    if constexpr (F::kind == field_kind::list_of_records || F::kind == field_kind::list_of_pointers) {
        const uint32_t count = list_count<S, I>(in);
        for (uint32_t i = 0; i < count && sum < enough; ++i)
            sum += known_octets(list_element<S, I>(in, i));
    } else {
        sum = known_field_octets<S, I>(in);
    }
    return sum;
}
template <class S, size_t... I>
uint64_t least_octets(const S& in, uint64_t enough, std::index_sequence<I...>) {
    return (uint64_t{0} + ... + known_element_octets<S, I>(in, enough));
}
template <class S>
uint64_t least_octets(const S& in, uint64_t enough) {
    return least_octets(in, enough, std::make_index_sequence<field_count_of<S>>());
}

template <class S>
uint64_t likely_octets(const S& in) {
    return least_octets(in, 65536);
}
}  // namespace zr
