// Releasing what a decode allocated inside a structure. Nothing here allocates or fails.
#pragma once

#include <cstdlib>
#include <cstring>
#include <new>

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
            for (size_t i = 0; i < count; ++i) {
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
        for (uint32_t i = 0; i < field_size<S, I>; ++i) {
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
    (release_field<Left, S, I>(structure), ...);
}

// The list of S in a record S. No memory may be needed for this, so the way back up is kept in the structures that are
// being released: each one's own blocks are gone before its list is entered.
template <class S>
void release_own_list(S& root) {
    constexpr size_t own = field_count_of<S> - 1;
    constexpr bool pointers = field_type<S, own>::kind == field_kind::list_of_pointers;
    using element = std::conditional_t<pointers, S*, S>;
    using C = typename field_type<S, own>::count_type;
    struct link {
        element* array;
        size_t left;
        link* up;
    };
    static_assert(sizeof(link) <= sizeof(S) && alignof(link) <= alignof(S), "a record of three words at least");

    auto* array = member_at<element*>(root, field_offset<S, own>);
    size_t left = array != nullptr ? member_at<C>(root, field_count_offset<S, own>) : 0;
    member_at<void*>(root, field_offset<S, own>) = nullptr;
    member_at<C>(root, field_count_offset<S, own>) = 0;
    for (link* up = nullptr;;) {
        if (left == 0) {
            std::free(array);
            if (up == nullptr) return;
            link* done = up;
            array = done->array;
            left = done->left;
            up = done->up;
            if (pointers) std::free(done);
            continue;
        }
        --left;
        S* node = nullptr;
        if constexpr (pointers) {
            node = array[left];
            if (node == nullptr) continue;
        } else {
            node = &array[left];
        }
        release_fields<leave::as_is>(*node, std::make_index_sequence<own>());
        auto* inner = member_at<element*>(*node, field_offset<S, own>);
        const size_t inner_count = member_at<C>(*node, field_count_offset<S, own>);
        if (inner == nullptr || inner_count == 0) {
            std::free(inner);
            if (pointers) std::free(node);
            continue;
        }
        up = new (static_cast<void*>(node)) link{array, left, up};
        array = inner;
        left = inner_count;
    }
}

template <leave Left, class S>
[[gnu::noinline]] void release_outlined(S& structure) {
    if constexpr (contains_itself<S>()) {
        release_fields<Left>(structure, std::make_index_sequence<field_count_of<S> - 1>());
        release_own_list(structure);
    } else {
        release_fields<Left>(structure, std::make_index_sequence<field_count_of<S>>());
    }
}

template <leave Left, class S>
ZR_INLINE void release(S& structure) {
    if constexpr (is_leaf<S>()) {
        release_fields<Left>(structure, std::make_index_sequence<field_count_of<S>>());
    } else {
        release_outlined<Left>(structure);
    }
}

template <class S>
void release_record(S& structure) {
    release<leave::cleared>(structure);
}

// A zeroed structure whose contents are released at the end of its scope.
template <class S>
struct released {
    released() { std::memset(static_cast<void*>(structure), 0, sizeof(S)); }
    released(const released&) = delete;
    released& operator=(const released&) = delete;
    ~released() { release_record(*structure); }

    alignas(S) unsigned char storage[sizeof(S)];
    S* structure = reinterpret_cast<S*>(storage);
};

}  // namespace zr
