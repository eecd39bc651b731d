// Decoding into a structure without an object tree, from octets in the form that the library writes.
#pragma once

#include <cstdlib>
#include <cstring>

#include "asn1/codec/values.h"
#include "asn1/codec/work_list.h"

namespace zr {

// read_record reads one SEQUENCE into a structure that is all zero and returns where it ends. Null for octets in any
// other form, refused ones among them. Whatever it returns or throws (zr_asn_memexception), the structure then holds
// what was read, and release_record releases it: counts are raised before their elements are read into, so that nothing
// is out of reach.
//
// All but the strings is inlined into one function for each record that is no leaf. (Declared in asn1/codec/values.h.)
//
// Blocks come from malloc, one for each thing, or in a packed structure from its blocks: `blocks` is nothing, or says
// where they come from, and goes all the way down. Where it is strict_blocks the readers are strict, where it is
// local_blocks they are local.

// Makes the structure for a place that holds it by pointer, all zero.
template <class F, class S, class... Blocks>
ZR_INLINE typename F::value_type& make_structure(place_of<F>& where, Blocks... blocks) {
    using R = typename F::value_type;
    auto* made = static_cast<R*>(allocate<alignof(R)>(sizeof(R), blocks...));
    if (__builtin_expect(made == nullptr, 0)) {
        if constexpr (F::held == holding::optional) throw_optional_memory_error(record<S>::module);
        throw_memory_error(record<S>::module);
    }
    std::memset(static_cast<void*>(made), 0, sizeof(R));
    where = made;
    return *made;
}

// Makes the array of a list for `count` elements, of which there is one at least.
template <class F, class S, class... Blocks>
ZR_INLINE auto* make_array(S& out, size_t count, Blocks... blocks) {
    using element = place_of<F>;
    void* array =
        count <= SIZE_MAX / sizeof(element) ? allocate<alignof(element)>(count * sizeof(element), blocks...) : nullptr;
    if (__builtin_expect(array == nullptr, 0)) throw_memory_error(record<S>::module);
    return array_of<F>(out) = static_cast<element*>(array);
}

// Whether a list's count can hold so many elements, and `octets` octets too.
template <class F>
ZR_INLINE bool is_plausible(size_t count, size_t octets) {
    return count <= octets / codec_of_value<F>::template least<F> && count <= static_cast<typename F::count_type>(-1);
}

// The next element of a list of records, counted and all zero: in the array, or in a block of its own.
template <class F, class S, class... Blocks>
ZR_INLINE auto& add_record(S& out, Blocks... blocks) {
    auto& count = count_of<F>(out);
    auto& where = array_of<F>(out)[count];
    if constexpr (is_by_pointer(F::value, F::held)) {
        auto& made = make_structure<F, S>(where, blocks...);
        ++count;
        return made;
    } else {
        std::memset(static_cast<void*>(&where), 0, sizeof where);
        ++count;
        return where;
    }
}

// A few integers are read before their number is known: that is quicker than counting them first. Lists of up to 32 are
// typical, and 128 octets of the stack are little.
template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_integers(octet_position at, octet_position stop, S& out, Blocks... blocks) {
    using T = typename F::value_type;
    static_assert(sizeof(T) == sizeof(int32_t), "holds every value, so that a strict reader has nothing to judge");
    constexpr size_t most = 32;
    T first[most];
    size_t read = 0;
    int32_t value = 0;
    for (; read < most && at != stop; ++read) {
        at = quick_integer<Blocks...>(at, stop, value);
        if (at == nullptr) return nullptr;
        first[read] = static_cast<T>(value);
    }
    size_t count = read;
    if (at != stop) {
        const auto left = static_cast<size_t>(stop - at);
        const size_t more = count_elements(at, stop);
        count += more;
        if (!is_plausible<F>(more, left) || !is_plausible<F>(count, SIZE_MAX)) return nullptr;
    }
    T* array = make_array<F>(out, count, blocks...);
    copy_octets(reinterpret_cast<unsigned char*>(array), first, read * sizeof(T));
    for (; read < count; ++read) {
        at = quick_integer<Blocks...>(at, stop, value);
        if (at == nullptr) return nullptr;
        array[read] = static_cast<T>(value);
    }
    count_of<F>(out) = static_cast<typename F::count_type>(count);
    return at;
}

template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_elements(octet_position at, octet_position stop, S& out, Blocks... blocks) {
    if constexpr (F::value == value_kind::integer) {
        return read_integers<F>(at, stop, out, blocks...);
    } else {
        size_t left = count_elements(at, stop);
        if (!is_plausible<F>(left, static_cast<size_t>(stop - at))) return nullptr;
        auto* where = make_array<F>(out, left, blocks...);
        for (; left != 0 && at != nullptr; --left) {
            if constexpr (F::value == value_kind::text) {
                *where = nullptr;
                ++count_of<F>(out);
                at = quick_text(at, stop, *where++, blocks...);
            } else {
                static_assert(F::value == value_kind::record || unknown_kind<F>);
                at = read_record(at, stop, add_record<F>(out, blocks...), blocks...);
            }
        }
        return at;
    }
}

template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_list(octet_position at, octet_position end, S& out, Blocks... blocks) {
    octet_position stop = nullptr;
    at = quick_sequence<Blocks...>(at, end, stop);
    if (at == nullptr || at == stop) return at;
    return read_elements<F>(at, stop, out, blocks...) == stop ? stop : nullptr;
}

template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_slots(octet_position at, octet_position end, S& out, Blocks... blocks) {
    octet_position stop = nullptr;
    at = quick_sequence<Blocks...>(at, end, stop);
    for (uint32_t i = 0; at != nullptr && at != stop; ++i) {
        if (i == F::size) return nullptr;
        if (at[0] == id_null) {
            if (stop - at < 2 || at[1] != 0) return nullptr;
            at += 2;
            if (is_strict<Blocks...> && at == stop) return nullptr;  // the last position that is written holds a record
            continue;
        }
        at = read_record(at, stop, make_structure<F, S>((&member_of<F>(out))[i], blocks...), blocks...);
    }
    return at;
}

// Reads a record, or octets, that may be missing.
template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_optional(octet_position at, octet_position end, S& out, Blocks... blocks) {
    constexpr unsigned char identifier = F::value == value_kind::record ? id_sequence : id_octet_string;
    if (at == end) return at;
    if (at[0] != identifier) {
        // Is it the value with an odd identifier?
        const unsigned int tag = at[0] & 0x1F;
        return tag == (identifier & 0x1F) || tag == 0x1F ? nullptr : at;
    }
    if constexpr (F::value == value_kind::octets) {
        return codec_of_value<F>::template read<F>(at, end, out, blocks...);
    } else {
        static_assert(F::value == value_kind::record || unknown_kind<F>);
        return read_record(at, end, make_structure<F, S>(member_of<F>(out), blocks...), blocks...);
    }
}

template <class F, class S, class... Blocks>
ZR_INLINE octet_position read_field(octet_position at, octet_position end, S& out, Blocks... blocks) {
    if constexpr (F::held == holding::one) {
        return codec_of_value<F>::template read<F>(at, end, out, blocks...);
    } else if constexpr (F::held == holding::optional) {
        return read_optional<F>(at, end, out, blocks...);
    } else if constexpr (F::held == holding::slots) {
        return read_slots<F>(at, end, out, blocks...);
    } else {
        static_assert(is_list(F::held) || unknown_kind<F>);
        return read_list<F>(at, end, out, blocks...);
    }
}

template <class S, size_t... I, class... Blocks>
ZR_INLINE octet_position read_fields(octet_position at, octet_position end, S& out, std::index_sequence<I...>,
                                     Blocks... blocks) {
    static_cast<void>((((at = read_field<field_at<S, I>>(at, end, out, blocks...)) != nullptr) && ...));
    return at;
}

// Reads a record that does not contain itself, where it is used.
template <class S, class... Blocks>
ZR_INLINE octet_position read_inlined_record(octet_position at, octet_position end, S& out, Blocks... blocks) {
    octet_position stop = nullptr;
    at = quick_sequence<Blocks...>(at, end, stop);
    if (at == nullptr) return nullptr;
    return read_fields(at, stop, out, field_indices<S>(), blocks...) == stop ? stop : nullptr;
}

// A record that contains itself, to any depth: what is open is on a work list.
template <class S, class... Blocks>
ZR_INLINE octet_position read_levels(octet_position at, octet_position end, S& root, Blocks... blocks) {
    using own = own_list<S>;
    // A record whose list is being read, but for its last element: what the record ends with ends together with it.
    struct level {
        S* node;
        octet_position stop;  // of the list, and so of the record
        size_t left;          // elements behind the one that is read
    };
    work_list<level> open;
    S* node = &root;
    bool is_last = false;  // the node ends where its list does
    for (;;) {
        octet_position stop = nullptr;
        octet_position list_stop = nullptr;
        at = quick_sequence<Blocks...>(at, end, stop);
        if (at == nullptr || (is_last && stop != end)) return nullptr;
        at = read_fields(at, stop, *node, std::make_index_sequence<own::index>(), blocks...);
        if (at == nullptr) return nullptr;
        at = quick_sequence<Blocks...>(at, stop, list_stop);
        if (at == nullptr || list_stop != stop) return nullptr;
        if (at != stop) {
            const size_t count = count_elements(at, stop);
            if (!is_plausible<own>(count, static_cast<size_t>(stop - at))) return nullptr;
            make_array<own>(*node, count, blocks...);
            is_last = count == 1;
            if (!is_last) open.push({node, stop, count - 1}, record<S>::module);
            end = stop;
        } else {
            if (open.empty()) return at;
            level& top = open.top();
            node = top.node;
            end = top.stop;
            is_last = --top.left == 0;
            if (is_last) open.pop();
        }
        node = &add_record<own>(*node, blocks...);
    }
}

// The record's one function, on an untyped structure.
template <class S, class... Blocks>
[[gnu::noinline]] octet_position read_outlined_record(octet_position at, octet_position end, void* out,
                                                      Blocks... blocks) {
    S& structure = *static_cast<S*>(out);
    if constexpr (contains_itself<S>()) {
        return read_levels(at, end, structure, blocks...);
    } else {
        return read_inlined_record(at, end, structure, blocks...);
    }
}

template <class S, class... Blocks>
ZR_INLINE octet_position read_record(octet_position at, octet_position end, S& out, Blocks... blocks) {
    if constexpr (is_leaf<S>()) return read_inlined_record(at, end, out, blocks...);
    if constexpr (is_local<Blocks...> && !has_texts<S>()) return read_outlined_record<S>(at, end, &out);
    return read_outlined_record<S>(at, end, &out, blocks...);
}

}  // namespace zr
