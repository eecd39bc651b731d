// Releasing what a decode allocated inside a structure. Nothing here allocates or fails.
//
// Blocks are freed in the reverse of the order in which a decode allocates them: then the allocator hands them out
// again in the order of their addresses, however many records have come and gone.
#pragma once

#include <cstdlib>
#include <cstring>

#include "asn1/record/open_records.h"
#include "asn1/record/shape.h"

namespace zr {

// release_record frees the blocks inside the structure, not the structure itself, and leaves pointers null and counts
// 0.
template <class S>
void release_record(S& structure);

// What is in a block that is itself released (an array's elements, a structure of its own) need not be cleared.
enum class leave { cleared, as_is };

template <leave Left, class S>
void release(S& structure);

template <leave Left, class S, size_t I>
ZR_INLINE void release_list(S& structure) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    using C = typename F::count_type;
    void* array = member_at<void*>(structure, field_offset<S, I>);
    if (array != nullptr) {
        if constexpr (F::kind != field_kind::list_of_integers) {
            const size_t count = member_at<C>(structure, field_count_offset<S, I>);
            for (size_t i = count; i-- != 0;) {
                if constexpr (F::kind == field_kind::list_of_texts) {
                    std::free(static_cast<char**>(array)[i]);
                } else if constexpr (F::kind == field_kind::list_of_pointers) {
                    T* element = static_cast<T**>(array)[i];
                    if (element != nullptr) release<leave::as_is>(*element);
                    std::free(element);
                } else {
                    release<leave::as_is>(static_cast<T*>(array)[i]);
                }
            }
        }
        std::free(array);
    }
    if constexpr (Left == leave::cleared) {
        member_at<void*>(structure, field_offset<S, I>) = nullptr;
        member_at<C>(structure, field_count_offset<S, I>) = 0;
    }
}

template <leave Left, class S, size_t I>
ZR_INLINE void release_field(S& structure) {
    using F = field_type<S, I>;
    using T = typename F::value_type;
    constexpr size_t offset = field_offset<S, I>;
    if constexpr (F::kind == field_kind::nested) {
        release<Left>(member_at<T>(structure, offset));
    } else if constexpr (F::kind == field_kind::slots) {
        for (uint32_t i = field_size<S, I>; i-- != 0;) {
            T*& slot = (&member_at<T*>(structure, offset))[i];
            if (slot == nullptr) continue;
            release<leave::as_is>(*slot);
            std::free(slot);
            if constexpr (Left == leave::cleared) slot = nullptr;
        }
    } else if constexpr (is_list(F::kind)) {
        release_list<Left, S, I>(structure);
    } else if constexpr (F::kind == field_kind::text || F::kind == field_kind::octets ||
                         F::kind == field_kind::optional_nested) {
        void* block = member_at<void*>(structure, offset);
        if constexpr (F::kind == field_kind::optional_nested) {
            if (block != nullptr) release<leave::as_is>(*static_cast<T*>(block));
        }
        std::free(block);
        if constexpr (Left == leave::cleared) member_at<void*>(structure, offset) = nullptr;
        if constexpr (Left == leave::cleared && F::kind == field_kind::octets)
            member_at<uint32_t>(structure, field_count_offset<S, I>) = 0;
    }
}

template <leave Left, class S, size_t... I>
ZR_INLINE void release_fields(S& structure, std::index_sequence<I...>) {
    (release_field<Left, S, sizeof...(I) - 1 - I>(structure), ...);
}

// A record that contains itself: the last element of a list first, each before the record around it, and its own blocks
// after all that is below it.
template <leave Left, class S>
void release_nested_records(S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    using F = field_type<S, own>;
    for (open_records<S> open(root);;) {
        S& record = open.record();
        auto*& list = member_at<array_element<F>*>(record, field_offset<S, own>);
        auto& count = member_at<typename F::count_type>(record, field_count_offset<S, own>);
        if (list != nullptr && count != 0) {
            S* last = nullptr;
            if constexpr (F::kind == field_kind::list_of_pointers) {
                last = list[count - 1];
            } else {
                last = &list[count - 1];
            }
            if (last != nullptr) {
                open.enter(last);
            } else {
                --count;
            }
            continue;
        }
        std::free(list);
        if (open.at_root()) {
            list = nullptr;
            count = 0;
            return release_fields<Left>(root, std::make_index_sequence<own>());
        }
        release_fields<leave::as_is>(record, std::make_index_sequence<own>());
        open.leave();
        S& around = open.record();
        const size_t left = --member_at<typename F::count_type>(around, field_count_offset<S, own>);
        if constexpr (F::kind == field_kind::list_of_pointers)
            std::free(member_at<S**>(around, field_offset<S, own>)[left]);
    }
}

// The record's one function for a way of leaving it, on an untyped structure.
template <leave Left, class S>
[[gnu::noinline]] void release_outlined(void* structure) {
    S& released = *static_cast<S*>(structure);
    if constexpr (contains_itself<S>()) {
        release_nested_records<Left>(released);
    } else {
        release_fields<Left>(released, std::make_index_sequence<field_count_of<S>>());
    }
}

template <leave Left, class S>
ZR_INLINE void release(S& structure) {
    if constexpr (is_leaf<S>()) {
        release_fields<Left>(structure, std::make_index_sequence<field_count_of<S>>());
    } else {
        release_outlined<Left, S>(&structure);
    }
}

template <class S>
void release_record(S& structure) {
    release<leave::cleared>(structure);
}

}  // namespace zr
