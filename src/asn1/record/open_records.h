// The path through a record that contains itself, while it is being decoded or released.
#pragma once

#include <cstring>

#include "asn1/record/shape.h"

namespace zr {

// open_records knows the record that is being worked on and finds back to those around it, without memory of its own.
// As long as an element of a list is open, the way up is kept where its own address makes up for what is overwritten:
//
//   an array of records:   in the list's array pointer, which is as far before the element as the count tells;
//   an array of pointers:  in the pointer to the element.
//
// Where the list ends is kept in the place of the element that comes next. Links carry the mark of a last element in
// their lowest bit. The destructor restores all that is still open, so that a record that was read half way can be
// released.
template <class S>
class open_records {
    static constexpr size_t own = field_count_of<S> - 1;
    using field = field_type<S, own>;
    using element = array_element<field>;
    static constexpr bool pointers = field::kind == field_kind::list_of_pointers;
    static_assert(alignof(S) > 1 && sizeof(element) >= sizeof(void*), "room for a mark and for a position");

public:
    explicit open_records(S& root) : record_(&root) {}
    open_records(const open_records&) = delete;
    open_records& operator=(const open_records&) = delete;
    ~open_records() {
        while (!at_root())
            leave();
    }

    S& record() const { return *record_; }
    bool at_root() const { return up_ == nullptr; }

    // Opens the element that the record's count counts last. `list_end` is where the list ends, null for its last
    // element.
    void enter(S* newest, const unsigned char* list_end = nullptr) {
        if (list_end != nullptr) std::memcpy(static_cast<void*>(list() + count()), &list_end, sizeof list_end);
        if constexpr (pointers) {
            list()[count() - 1] = up_;
        } else {
            list() = up_;
        }
        up_ = marked(record_, list_end == nullptr);
        record_ = newest;
    }
    // Goes back to the record around this one, and tells whether this one was the last of its list.
    bool leave() {
        const bool last = (reinterpret_cast<uintptr_t>(up_) & 1) != 0;
        S* const newest = record_;
        record_ = marked(up_, false);
        if constexpr (pointers) {
            up_ = list()[count() - 1];
            list()[count() - 1] = newest;
        } else {
            up_ = list();
            list() = newest - (count() - 1);
        }
        return last;
    }
    // Where the record's list ends: after an element that was not the last.
    const unsigned char* list_end() const {
        const unsigned char* end = nullptr;
        std::memcpy(&end, static_cast<const void*>(list() + count()), sizeof end);
        return end;
    }

private:
    static S* marked(S* link, bool last) {
        return reinterpret_cast<S*>((reinterpret_cast<uintptr_t>(link) & ~uintptr_t{1}) | (last ? 1 : 0));
    }
    element*& list() const { return member_at<element*>(*record_, field_offset<S, own>); }
    size_t count() const { return member_at<typename field::count_type>(*record_, field_count_offset<S, own>); }

    S* record_;
    S* up_ = nullptr;
};

}  // namespace zr
