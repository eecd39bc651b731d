// Decoding into a structure without an object tree.
#pragma once

#include "asn1/record/reader.h"
#include "asn1/record/release.h"
#include "asn1/record/shape.h"
#include "asn1/record/work_list.h"

namespace zr {

// read_record reads one SEQUENCE into a structure that is all zero. Whatever it returns or throws, the structure then
// holds what was read, and release_record releases it: counts are raised before their elements are read into, so that
// nothing is out of reach. Returns a status of the object tree or beyond_structure; throws zr_asn_memexception.
//
// Everything is inlined into one function for each record with lists.
template <class S>
int read_record(input& in, S& out);

// The array of a list that is being read is made for the elements that their headers promise, and grows when there are
// more. R is the type of an array element.
template <class R>
ZR_INLINE void resize_array(void*& array, size_t capacity, const char* file) {
    void* block = nullptr;
    if (capacity <= SIZE_MAX / sizeof(R))
        block = array == nullptr ? std::malloc(capacity * sizeof(R)) : std::realloc(array, capacity * sizeof(R));
    if (block == nullptr) throw_memory_error(file);
    array = block;
}

// How many elements to make room for: as many as there are headers, but no more than the octets can hold.
template <size_t MinOctets>
ZR_INLINE size_t promised_elements(const input& in, const scope& entered) {
    if (entered.indefinite || in.at == in.end) return 0;
    const size_t most = in.left() / MinOctets + 1;
    const size_t counted = count_elements(in.at, in.end);
    return counted < most ? counted : most;
}

// An allocated, zeroed structure.
template <class R>
R* make_structure() {
    auto* made = static_cast<R*>(std::malloc(sizeof(R)));
    if (made != nullptr) std::memset(static_cast<void*>(made), 0, sizeof(R));
    return made;
}

// The type of a list's array elements.
template <class Field>
using array_element = std::conditional_t<Field::kind == field_kind::list_of_pointers, typename Field::value_type*,
                                         typename Field::value_type>;

template <class S, size_t I>
constexpr size_t min_element_octets() {
    using F = field_type<S, I>;
    if constexpr (std::is_class_v<typename F::value_type>) return min_octets<typename F::value_type>();
    return 2;
}

// A list that has been entered and is being read.
template <class S, size_t I>
struct list_reader {
    using F = field_type<S, I>;
    using element = array_element<F>;
    using C = typename F::count_type;

    // Makes room for the elements that are ahead.
    ZR_INLINE void make_room(const input& in, const scope& entered, S& out) {
        capacity = promised_elements<min_element_octets<S, I>()>(in, entered);
        if (capacity != 0) resize_array<element>(array(out), capacity, record<S>::module);
    }
    // A new element, counted and zeroed; null when the count cannot hold it.
    ZR_INLINE element* add(S& out) {
        C& count = member_at<C>(out, field_count_offset<S, I>);
        if (count == static_cast<C>(-1)) return nullptr;
        if (count == capacity) {
            const size_t grown = capacity < 4 ? 8 : capacity * 2;
            resize_array<element>(array(out), grown, record<S>::module);
            capacity = grown;
        }
        element* place = static_cast<element*>(array(out)) + count;
        std::memset(static_cast<void*>(place), 0, sizeof *place);
        ++count;
        return place;
    }
    // The structure of a new element, in the array or in a block of its own; null when the count cannot hold it.
    ZR_INLINE auto* add_record(S& out) {
        element* place = add(out);
        if constexpr (F::kind == field_kind::list_of_pointers) {
            if (place == nullptr) return element{};
            *place = make_structure<typename F::value_type>();
            if (*place == nullptr) throw_memory_error(record<S>::module);
            return *place;
        } else {
            return place;
        }
    }
    // Gives back what growing has left over.
    ZR_INLINE void finish(S& out) {
        const size_t count = member_at<C>(out, field_count_offset<S, I>);
        if (count == capacity) return;
        void* shrunk = std::realloc(array(out), count * sizeof(element));
        if (shrunk != nullptr) array(out) = shrunk;
    }

    static void*& array(S& out) { return member_at<void*>(out, field_offset<S, I>); }

    size_t capacity = 0;
};

// A few integers are read before their number is known: that is quicker than counting them first. `capacity` gets what
// there is room for then.
template <class S, size_t I>
ZR_INLINE int read_first_integers(input& in, const scope& entered, S& out, size_t& capacity) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t most = 32;
    T first[most];
    size_t count = 0;
    while (count < most && !at_end(in, entered)) {
        int32_t value = 0;
        if (int status = read_integer(in, value)) return status;
        first[count++] = static_cast<T>(value);
    }
    if (count == 0) return 0;
    capacity = count + promised_elements<2>(in, entered);
    void*& array = member_at<void*>(out, field_offset<S, I>);
    resize_array<T>(array, capacity, record<S>::module);
    std::memcpy(array, first, count * sizeof(T));
    member_at<typename F::count_type>(out, field_count_offset<S, I>) = static_cast<typename F::count_type>(count);
    return 0;
}

template <class S, size_t I>
ZR_INLINE int read_list(input& in, S& out) {
    using F = field_type<S, I>;
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    list_reader<S, I> list;
    if constexpr (F::kind == field_kind::list_of_integers) {
        if (int status = read_first_integers<S, I>(in, entered, out, list.capacity)) return status;
    } else {
        list.make_room(in, entered, out);
    }
    while (!at_end(in, entered)) {
        int status = beyond_structure;
        if constexpr (F::kind == field_kind::list_of_texts) {
            if (char** text = list.add(out)) status = read_text(in, *text);
        } else if constexpr (F::kind == field_kind::list_of_integers) {
            int32_t value = 0;
            if (auto* integer = list.add(out)) {
                status = read_integer(in, value);
                *integer = static_cast<typename F::value_type>(value);
            }
        } else {
            if (auto* element = list.add_record(out)) status = read_record(in, *element);
        }
        if (status != 0) return status;
    }
    list.finish(out);
    return leave_sequence(in, entered);
}

// Positions behind the last slot are read and checked like the others, and dropped.
template <class S, size_t I>
ZR_INLINE int read_slots(input& in, S& out) {
    using R = typename field_type<S, I>::value_type;
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    for (uint32_t i = 0; !at_end(in, entered); ++i) {
        // An indefinite length may run out of octets: what is not there is no NULL, and no record.
        if (in.at != in.end && in.at[0] != id_sequence) {
            const unsigned char* before = in.at;
            in.move_to(skip_null_slow(in.at, in.end));
            if (in.at != before) continue;
        }
        int status = 0;
        if (i < field_size<S, I>) {
            R*& slot = (&member_at<R*>(out, field_offset<S, I>))[i];
            slot = make_structure<R>();
            if (slot == nullptr) throw_memory_error(record<S>::module);
            status = read_record(in, *slot);
        } else {
            const released<R> dropped;
            status = read_record(in, *dropped.structure);
        }
        // A position that reads as neither NULL nor the record fits no alternative, whatever its own status.
        if (status != 0) return status == beyond_structure ? status : zr_err_no_match;
    }
    return leave_sequence(in, entered);
}

template <class S, size_t I>
ZR_INLINE int read_field(input& in, S& out) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t offset = field_offset<S, I>;
    if constexpr (F::kind == field_kind::integer) {
        int32_t value = 0;
        const int status = read_integer(in, value);
        member_at<T>(out, offset) = static_cast<T>(value);
        return status;
    } else if constexpr (F::kind == field_kind::text) {
        return read_text(in, member_at<char*>(out, offset));
    } else if constexpr (F::kind == field_kind::octets) {
        return read_octets(in, member_at<unsigned char*>(out, offset),
                           member_at<uint32_t>(out, field_count_offset<S, I>), record<S>::module);
    } else if constexpr (F::kind == field_kind::fixed_octets) {
        return read_fixed_octets<field_size<S, I>>(in, &member_at<unsigned char>(out, offset));
    } else if constexpr (F::kind == field_kind::nested) {
        return read_record(in, member_at<T>(out, offset));
    } else if constexpr (F::kind == field_kind::optional_nested) {
        if (!next_is_sequence(in)) return 0;
        T*& nested = member_at<T*>(out, offset);
        nested = make_structure<T>();
        if (nested == nullptr) throw_optional_memory_error(record<S>::module);
        return read_record(in, *nested);
    } else if constexpr (F::kind == field_kind::slots) {
        return read_slots<S, I>(in, out);
    } else {
        return read_list<S, I>(in, out);
    }
}

template <class S, size_t... I>
ZR_INLINE int read_fields(input& in, S& out, std::index_sequence<I...>) {
    int status = 0;
    static_cast<void>((((status = read_field<S, I>(in, out)) == 0) && ...));
    return status;
}

// A record that contains itself: each open level keeps its place on a work list.
template <class S>
ZR_INLINE int read_nested_records(input& in, S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    struct level {
        S* node;
        scope node_scope;
        scope list_scope;
        list_reader<S, own> list;
    };
    work_list<level> open;
    for (S* node = &root;;) {
        scope node_scope{};
        scope list_scope{};
        if (int status = enter_sequence(in, node_scope)) return status;
        if (int status = read_fields(in, *node, std::make_index_sequence<own>())) return status;
        if (int status = enter_sequence(in, list_scope)) return status;
        list_reader<S, own> list;
        list.make_room(in, list_scope, *node);
        open.push({node, node_scope, list_scope, list}, record<S>::module);
        // Close what ends here, up to a list with another element.
        while (at_end(in, open.top().list_scope)) {
            level& ended = open.top();
            ended.list.finish(*ended.node);
            if (int status = leave_sequence(in, ended.list_scope)) return status;
            if (int status = leave_sequence(in, ended.node_scope)) return status;
            open.pop();
            if (open.empty()) return 0;
        }
        node = open.top().list.add_record(*open.top().node);
        if (node == nullptr) return beyond_structure;
    }
}

template <class S>
ZR_INLINE int read_plain_record(input& in, S& out) {
    scope entered{};
    if (int status = enter_sequence(in, entered)) return status;
    if (int status = read_fields(in, out, std::make_index_sequence<field_count_of<S>>())) return status;
    return leave_sequence(in, entered);
}

// The cursor behind the record; after a failure `at` is null and `end` carries the status, so that both fit registers.
template <class S>
[[gnu::noinline]] input read_outlined_record(const unsigned char* at, const unsigned char* end, S& out) {
    input in{at, end};
    int status = 0;
    if constexpr (contains_itself<S>()) {
        status = read_nested_records(in, out);
    } else {
        status = read_plain_record(in, out);
    }
    if (__builtin_expect(status != 0, 0)) return {nullptr, reinterpret_cast<const unsigned char*>(intptr_t{status})};
    return in;
}

template <class S>
ZR_INLINE int read_record(input& in, S& out) {
    if constexpr (is_leaf<S>()) return read_plain_record(in, out);
    const input behind = read_outlined_record(in.at, in.end, out);
    if (__builtin_expect(behind.at == nullptr, 0)) return static_cast<int>(reinterpret_cast<intptr_t>(behind.end));
    in.move_to(behind);
    return 0;
}

}  // namespace zr
