// Releasing what a decode allocated inside a structure. Nothing here allocates or fails.
//
// Blocks are freed in the reverse of the order in which a decode allocates them: then the allocator hands them out
// again in the order of their addresses, however many records have come and gone.
#pragma once

#include <cstdlib>

#include "asn1/codec/values.h"
#include "asn1/codec/wipe.h"

namespace zr {

// Releases the value in a place.
template <members_after After, class F>
ZR_INLINE void release_value(place_of<F>& where) {
    if constexpr (is_by_pointer(F::value, F::held)) {
        auto* const value = where;
        if (value == nullptr) return;
        release<members_after::any>(*value);
        std::free(value);
        if constexpr (After == members_after::cleared) where = nullptr;
    } else {
        if constexpr (F::secret) wipe_block(where);
        codec_of_value<F>::template release<After>(where);
    }
}

template <members_after After, class F, class S>
ZR_INLINE void release_field(S& structure) {
    if constexpr (is_list(F::held)) {
        auto* const array = array_of<F>(structure);
        if (array != nullptr) {
            if constexpr (codec_of_value<F>::holds_blocks) {
                for (size_t i = count_of<F>(structure); i-- != 0;)
                    release_value<members_after::any, F>(array[i]);
            }
            std::free(array);
        }
        if constexpr (After == members_after::cleared) array_of<F>(structure) = nullptr;
    } else if constexpr (F::held == holding::slots) {
        for (uint32_t i = F::size; i-- != 0;)
            release_value<After, F>((&member_of<F>(structure))[i]);
    } else if constexpr (F::held == holding::optional && F::value == value_kind::octets) {
        // Of length 0 they are absent, and what the pointer may say is not the structure's.
        if (count_of<F>(structure) != 0) release_value<members_after::any, F>(member_of<F>(structure));
        if constexpr (After == members_after::cleared) member_of<F>(structure) = nullptr;
    } else {
        static_assert(F::held == holding::one || F::held == holding::optional || unknown_kind<F>);
        release_value<After, F>(member_of<F>(structure));
    }
    if constexpr (After == members_after::cleared && !std::is_void_v<typename F::count_type>)
        count_of<F>(structure) = 0;
}

template <members_after After, class S, size_t... I>
ZR_INLINE void release_fields(S& structure, std::index_sequence<I...>) {
    (release_field<After, field_at<S, sizeof...(I) - 1 - I>>(structure), ...);
}

// The way up from a record that is being released to those around it. There is no memory to be had for it, so it lies
// in what is about to be freed: in the pointer to the open element, or, where elements lie in an array, in the pointer
// to the array, which the element's own address makes up for.
template <class S>
class way_up {
    using own = own_list<S>;

public:
    explicit way_up(S& root) : record_(&root) {}

    S& record() const { return *record_; }
    bool at_root() const { return around_ == nullptr; }

    // Goes down into the last element that the record's list counts, which is there.
    void enter_last() {
        const size_t last = count_of<own>(*record_) - 1;
        auto*& array = array_of<own>(*record_);
        S* const element = address_of(array[last]);
        if constexpr (is_by_pointer(own::value, own::held)) {
            array[last] = around_;
        } else {
            array = around_;
        }
        around_ = record_;
        record_ = element;
    }
    // Goes up from a record that holds no blocks any more, and takes it off the list around it.
    void leave() {
        S* const left = record_;
        record_ = around_;
        const size_t last = --count_of<own>(*record_);
        auto*& array = array_of<own>(*record_);
        if constexpr (is_by_pointer(own::value, own::held)) {
            around_ = array[last];
            std::free(left);
        } else {
            around_ = array;
            array = left - last;
        }
    }

private:
    static S* address_of(S& element) { return &element; }
    static S* address_of(S* element) { return element; }

    S* record_;
    S* around_ = nullptr;
};

// A record that contains itself: the last element of a list first, each before the record around it, and its own blocks
// after all that is below it.
template <members_after After, class S>
void release_levels(S& root) {
    using own = own_list<S>;
    for (way_up<S> open(root);;) {
        S& record = open.record();
        auto*& array = array_of<own>(record);
        auto& count = count_of<own>(record);
        if (array != nullptr && count != 0) {
            if constexpr (is_by_pointer(own::value, own::held)) {
                if (array[count - 1] == nullptr) {
                    --count;
                    continue;
                }
            }
            open.enter_last();
            continue;
        }
        std::free(array);
        if (open.at_root()) {
            array = nullptr;
            count = 0;
            return release_fields<After>(root, std::make_index_sequence<own::index>());
        }
        release_fields<members_after::any>(record, std::make_index_sequence<own::index>());
        open.leave();
    }
}

// The record's one function for what becomes of its members, on an untyped structure.
template <members_after After, class S>
[[gnu::noinline]] void release_outlined(void* structure) {
    S& released = *static_cast<S*>(structure);
    if constexpr (contains_itself<S>()) {
        release_levels<After>(released);
    } else {
        release_fields<After>(released, field_indices<S>());
    }
}

template <members_after After, class S>
ZR_INLINE void release(S& structure) {
    if constexpr (is_leaf<S>()) {
        release_fields<After>(structure, field_indices<S>());
    } else {
        release_outlined<After, S>(&structure);
    }
}

// release_record frees the blocks inside the structure, not the structure itself, and leaves pointers null and counts
// 0.
template <class S>
ZR_INLINE void release_record(S& structure) {
    release<members_after::cleared>(structure);
}

}  // namespace zr
