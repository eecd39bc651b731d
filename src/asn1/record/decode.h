// Decoding into a structure without an object tree, from octets in the form that the library writes.
#pragma once

#include "asn1/record/open_records.h"
#include "asn1/record/quick_reader.h"
#include "asn1/record/reader.h"
#include "asn1/record/release.h"
#include "asn1/record/shape.h"

namespace zr {

// read_record reads one SEQUENCE into a structure that is all zero and returns where it ends. Null for octets in any
// other form, refused ones among them. Whatever it returns or throws (zr_asn_memexception), the structure then holds
// what was read, and release_record releases it: counts are raised before their elements are read into, so that nothing
// is out of reach.
//
// All but the strings is inlined into one function for each record with lists.
template <class S>
octet_position read_record(octet_position at, octet_position end, S& out);

// The structure of an allocated record, all zero.
template <class R>
ZR_INLINE R* make_structure() {
    auto* made = static_cast<R*>(std::malloc(sizeof(R)));
    if (made != nullptr) std::memset(static_cast<void*>(made), 0, sizeof(R));
    return made;
}

// Makes the array of a list for `count` elements, of which there is one at least.
template <class S, size_t I>
ZR_INLINE array_element<field_type<S, I>>* make_array(S& out, size_t count) {
    using element = array_element<field_type<S, I>>;
    void* array = count <= SIZE_MAX / sizeof(element) ? std::malloc(count * sizeof(element)) : nullptr;
    if (__builtin_expect(array == nullptr, 0)) throw_memory_error(record<S>::module);
    member_at<void*>(out, field_offset<S, I>) = array;
    return static_cast<element*>(array);
}

// Whether a list's count can hold so many elements, and `octets` octets too.
template <class S, size_t I>
ZR_INLINE bool is_plausible(size_t count, size_t octets) {
    using C = typename field_type<S, I>::count_type;
    return count <= octets / min_element_octets<S, I>() && count <= static_cast<C>(-1);
}

// A new element of a list of records, counted and all zero: in the array, or in a block of its own.
template <class S, size_t I>
ZR_INLINE auto* add_record(S& out) {
    using F = field_type<S, I>;
    using R = typename F::value_type;
    auto& count = member_at<typename F::count_type>(out, field_count_offset<S, I>);
    auto* place = static_cast<array_element<F>*>(member_at<void*>(out, field_offset<S, I>)) + count;
    if constexpr (F::kind == field_kind::list_of_pointers) {
        R* made = make_structure<R>();
        if (__builtin_expect(made == nullptr, 0)) throw_memory_error(record<S>::module);
        *place = made;
        ++count;
        return made;
    } else {
        std::memset(static_cast<void*>(place), 0, sizeof(R));
        ++count;
        return place;
    }
}

// A few integers are read before their number is known: that is quicker than counting them first.
template <class S, size_t I>
ZR_INLINE octet_position read_integers(octet_position at, octet_position stop, S& out) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t most = 32;
    T first[most];
    size_t read = 0;
    int32_t value = 0;
    for (; read < most && at != stop; ++read) {
        at = quick_integer(at, stop, value);
        if (at == nullptr) return nullptr;
        first[read] = static_cast<T>(value);
    }
    size_t count = read;
    if (at != stop) {
        const auto left = static_cast<size_t>(stop - at);
        const size_t more = count_elements(at, stop);
        count += more;
        if (!is_plausible<S, I>(more, left) || !is_plausible<S, I>(count, SIZE_MAX)) return nullptr;
    }
    T* array = make_array<S, I>(out, count);
    copy_octets(reinterpret_cast<unsigned char*>(array), first, read * sizeof(T));
    for (; read < count; ++read) {
        at = quick_integer(at, stop, value);
        if (at == nullptr) return nullptr;
        array[read] = static_cast<T>(value);
    }
    member_at<typename F::count_type>(out, field_count_offset<S, I>) = static_cast<typename F::count_type>(count);
    return at;
}

template <class S, size_t I>
ZR_INLINE octet_position read_elements(octet_position at, octet_position stop, S& out) {
    using F = field_type<S, I>;
    if constexpr (F::kind == field_kind::list_of_integers) {
        return read_integers<S, I>(at, stop, out);
    } else {
        size_t left = count_elements(at, stop);
        if (!is_plausible<S, I>(left, static_cast<size_t>(stop - at))) return nullptr;
        auto* place = make_array<S, I>(out, left);
        for (; left != 0 && at != nullptr; --left) {
            if constexpr (F::kind == field_kind::list_of_texts) {
                *place = nullptr;
                ++member_at<typename F::count_type>(out, field_count_offset<S, I>);
                at = quick_text(at, stop, *place++);
            } else {
                at = read_record(at, stop, *add_record<S, I>(out));
            }
        }
        return at;
    }
}

template <class S, size_t I>
ZR_INLINE octet_position read_list(octet_position at, octet_position end, S& out) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    if (at == nullptr || at == stop) return at;
    return read_elements<S, I>(at, stop, out) == stop ? stop : nullptr;
}

template <class S, size_t I>
ZR_INLINE octet_position read_slots(octet_position at, octet_position end, S& out) {
    using R = typename field_type<S, I>::value_type;
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    for (uint32_t i = 0; at != nullptr && at != stop; ++i) {
        if (i == field_size<S, I>) return nullptr;
        if (at[0] == id_null) {
            if (stop - at < 2 || at[1] != 0) return nullptr;
            at += 2;
            continue;
        }
        R* made = make_structure<R>();
        if (__builtin_expect(made == nullptr, 0)) throw_memory_error(record<S>::module);
        (&member_at<R*>(out, field_offset<S, I>))[i] = made;
        at = read_record(at, stop, *made);
    }
    return at;
}

// Reads a record that may be missing.
template <class S, size_t I>
ZR_INLINE octet_position read_optional(octet_position at, octet_position end, S& out) {
    using R = typename field_type<S, I>::value_type;
    if (at == end) return at;
    if (at[0] != id_sequence) {
        // Is it a SEQUENCE with an odd identifier?
        const unsigned int tag = at[0] & 0x1F;
        return tag == (id_sequence & 0x1F) || tag == 0x1F ? nullptr : at;
    }
    R* made = make_structure<R>();
    if (__builtin_expect(made == nullptr, 0)) throw_optional_memory_error(record<S>::module);
    member_at<R*>(out, field_offset<S, I>) = made;
    return read_record(at, end, *made);
}

template <class S, size_t I>
ZR_INLINE octet_position read_field(octet_position at, octet_position end, S& out) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t offset = field_offset<S, I>;
    if constexpr (F::kind == field_kind::integer) {
        int32_t value = 0;
        at = quick_integer(at, end, value);
        member_at<T>(out, offset) = static_cast<T>(value);
        return at;
    } else if constexpr (F::kind == field_kind::text) {
        return quick_text(at, end, member_at<char*>(out, offset));
    } else if constexpr (F::kind == field_kind::octets) {
        return quick_octets(at, end, member_at<unsigned char*>(out, offset),
                            member_at<uint32_t>(out, field_count_offset<S, I>), record<S>::module);
    } else if constexpr (F::kind == field_kind::fixed_octets) {
        return quick_fixed_octets<field_size<S, I>>(at, end, &member_at<unsigned char>(out, offset));
    } else if constexpr (F::kind == field_kind::nested) {
        return read_record(at, end, member_at<T>(out, offset));
    } else if constexpr (F::kind == field_kind::optional_nested) {
        return read_optional<S, I>(at, end, out);
    } else if constexpr (F::kind == field_kind::slots) {
        return read_slots<S, I>(at, end, out);
    } else {
        return read_list<S, I>(at, end, out);
    }
}

template <class S, size_t... I>
ZR_INLINE octet_position read_fields(octet_position at, octet_position end, S& out, std::index_sequence<I...>) {
    static_cast<void>((((at = read_field<S, I>(at, end, out)) != nullptr) && ...));
    return at;
}

template <class S>
ZR_INLINE octet_position read_plain_record(octet_position at, octet_position end, S& out) {
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    if (at == nullptr) return nullptr;
    return read_fields(at, stop, out, std::make_index_sequence<field_count_of<S>>()) == stop ? stop : nullptr;
}

// A record that contains itself, to any depth: what is open is kept in the structures that are being read.
template <class S>
ZR_INLINE octet_position read_nested_records(octet_position at, octet_position end, S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    octet_position stop = nullptr;
    at = quick_contents(at, end, id_sequence, stop);
    if (at == nullptr) return nullptr;
    for (open_records<S> open(root);;) {
        // `at` is at the first field of the open record, which ends at `stop`, and its list with it.
        octet_position list_stop = nullptr;
        at = read_fields(at, stop, open.record(), std::make_index_sequence<own>());
        if (at == nullptr) return nullptr;
        at = quick_contents(at, stop, id_sequence, list_stop);
        if (at == nullptr || list_stop != stop) return nullptr;
        if (at != stop) {
            const size_t count = count_elements(at, stop);
            if (!is_plausible<S, own>(count, static_cast<size_t>(stop - at))) return nullptr;
            make_array<S, own>(open.record(), count);
            end = stop;
        } else {
            // Nothing is below it. What ends with it is complete, up to a list with another element.
            do {
                if (open.at_root()) return at;
            } while (open.leave());
            end = open.list_end();
        }
        at = quick_contents(at, end, id_sequence, stop);
        if (at == nullptr) return nullptr;
        S* element = add_record<S, own>(open.record());
        open.enter(element, stop == end ? nullptr : end);
    }
}

// The record's one function, on an untyped structure.
template <class S>
[[gnu::noinline]] octet_position read_outlined_record(octet_position at, octet_position end, void* out) {
    S& structure = *static_cast<S*>(out);
    if constexpr (contains_itself<S>()) {
        return read_nested_records(at, end, structure);
    } else {
        return read_plain_record(at, end, structure);
    }
}

template <class S>
ZR_INLINE octet_position read_record(octet_position at, octet_position end, S& out) {
    if constexpr (is_leaf<S>()) return read_plain_record(at, end, out);
    return read_outlined_record<S>(at, end, &out);
}

}  // namespace zr
