// Building and changing records without a leak:
//
//     zr::decoded<attrlist_s_t> list;
//     zr::decoded<attr_s_t> owner;
//     int status = zr::set_text(owner.edit(), &attr_s_t::name, "owner");
//     if (status == 0) status = zr::append(list.edit(), &attrlist_s_t::attrs, std::move(owner));
//     for (const attr_s_t& attr : zr::elements(*list, &attrlist_s_t::attrs)) use(attr.name);
//
// Members are named by pointers to them; the counting members follow by themselves. Blocks are made as a decode makes
// them, so zrAsnFreeObj, or a guard, releases the structure as after a decode, and what is replaced or erased is
// released at once. A structure must be all zero or hold only such blocks: one whose pointers lead into the program's
// own arrays is not for these functions. Pointers and ranges into a list end with its next change.
//
// Each returns 0, or a status with everything as it was: 275062885 when memory ends, or the count or the slots hold no
// more; 275063196 when there is no such element, a text has a zero octet, or the member holds no values of that sort.
// Nothing here throws or prints.
#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

#include "asn1/record/editing.h"
#include "asn1/record/members.h"
#include "asn1/record/record.h"
#include "zrasn/guard.h"

namespace zr {

// Where a member lies in its structure.
template <class S, class T>
size_t offset_of(const S& structure, T S::*member) noexcept {
    return static_cast<size_t>(reinterpret_cast<const unsigned char*>(&(structure.*member)) -
                               reinterpret_cast<const unsigned char*>(&structure));
}

// What one value of a member is, by the member's type in C: a text, an integer or a structure. Where a pointer to a
// structure may be an array or an optional value, the record's list of fields decides, when the call is made.
template <class M>
struct value_of_member {
    static_assert(is_described<M>::value,
                  "the member is no text, list, slots or record: zrasn/edit.h has nothing for it");
    using type = M;
};
template <>
struct value_of_member<char*> {
    using type = std::string_view;
};
template <>
struct value_of_member<char**> {
    using type = std::string_view;
};
template <class R>
struct value_of_member<R*> {
    static_assert(is_described<R>::value || (std::is_integral_v<R> && sizeof(R) == 4), "not a list that a record has");
    using type = R;
};
template <class R>
struct value_of_member<R**> : value_of_member<R*> {};
template <class R, size_t N>
struct value_of_member<R* [N]> : value_of_member<R*> {};

// Calls put(new_value) for a value of the type T. What a guard holds is handed over: the guard is empty after success,
// and as it was after a failure.
template <class T, class V, class Put>
int put_value(V&& value, const Put& put) noexcept {
    if constexpr (std::is_same_v<T, std::string_view>) {
        const std::string_view text = value;
        return put(new_value{text.data(), text.size(), false});
    } else if constexpr (std::is_same_v<V, decoded<T>>) {
        const int status = put(new_value{&*value, 0, true});
        if (status == 0) static_cast<void>(value.release());
        return status;
    } else {
        const T& structure_or_number = value;
        return put(new_value{&structure_or_number, 0, false});
    }
}

// set replaces the value of a text or of a nested or optional record, or with an index that of an element or a slot.
// The value is a std::string_view, an integer, or a structure: one that is given as such is copied, one in a guard that
// is moved is handed over.
template <class S, class M, class V>
[[nodiscard]] int set(S& structure, M S::*member, size_t index, V&& value) noexcept {
    return put_value<typename value_of_member<M>::type>(std::forward<V>(value), [&](const new_value& put) noexcept {
        return set_value(record<S>::type, offset_of(structure, member), &structure, index, put);
    });
}
template <class S, class M, class V>
[[nodiscard]] int set(S& structure, M S::*member, V&& value) noexcept {
    return set(structure, member, 0, std::forward<V>(value));
}

// The text becomes a copy of `text`; with an index, that of a list of texts.
template <class S>
[[nodiscard]] int set_text(S& structure, char* S::*member, std::string_view text) noexcept {
    return set(structure, member, text);
}
template <class S>
[[nodiscard]] int set_text(S& structure, char** S::*list, size_t index, std::string_view text) noexcept {
    return set(structure, list, index, text);
}

// The byte string becomes a copy of `length` octets; optional octets of length 0 are absent.
template <class S>
[[nodiscard]] int set_octets(S& structure, unsigned char* S::*member, const void* octets, size_t length) noexcept {
    return set_value(record<S>::type, offset_of(structure, member), &structure, 0, {octets, length, false});
}

// insert puts a value before element `index` of a list, append behind its last; n values that are appended one by one
// cost n steps. To slots append fills the one behind the last that is used.
template <class S, class M, class V>
[[nodiscard]] int insert(S& structure, M S::*list, size_t index, V&& value) noexcept {
    return put_value<typename value_of_member<M>::type>(std::forward<V>(value), [&](const new_value& put) noexcept {
        return insert_value(record<S>::type, offset_of(structure, list), &structure, index, put);
    });
}
template <class S, class M, class V>
[[nodiscard]] int append(S& structure, M S::*list, V&& value) noexcept {
    return insert(structure, list, behind_the_last, std::forward<V>(value));
}

// erase takes elements out of a list, and empties slots, where all others keep their places. It fails for elements that
// are not there only.
template <class S, class M>
[[nodiscard]] int erase(S& structure, M S::*member, size_t index, size_t count = 1) noexcept {
    static_assert(sizeof(typename value_of_member<M>::type) != 0);
    return erase_values(record<S>::type, offset_of(structure, member), &structure, index, count);
}

// clear leaves a list without elements, all slots empty, an optional record absent.
template <class S, class M>
void clear(S& structure, M S::*member) noexcept {
    static_assert(sizeof(typename value_of_member<M>::type) != 0);
    const record_type& type = record<S>::type;
    const size_t at = offset_of(structure, member);
    const field* const field = find_field(type, at);
    if (field != nullptr) static_cast<void>(erase_values(type, at, &structure, 0, place_count(*field, &structure)));
}

// A range over the values of a member: those in an array, or those that the pointers of an array or of slots lead to,
// where null ones are passed over. T is what one value is given as.
template <class T, class Place>
class element_range {
public:
    // Goes over the values in their order.
    class iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = std::remove_cv_t<std::remove_reference_t<T>>;
        using difference_type = std::ptrdiff_t;
        using reference = T;
        using pointer = void;

        iterator() = default;
        // At the first value that is there from `at` on.
        iterator(Place* at, Place* end) noexcept : at_(at), end_(end) { pass_over(); }
        // The value.
        T operator*() const noexcept {
            if constexpr (std::is_same_v<T, std::string_view>) {
                return *at_ != nullptr ? T(*at_) : T();
            } else if constexpr (std::is_pointer_v<Place>) {
                return **at_;
            } else {
                return *at_;
            }
        }
        iterator& operator++() noexcept {
            ++at_;
            pass_over();
            return *this;
        }
        iterator operator++(int) noexcept {
            const iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.at_ == b.at_; }
        friend bool operator!=(const iterator& a, const iterator& b) noexcept { return a.at_ != b.at_; }

    private:
        void pass_over() noexcept {
            if constexpr (std::is_pointer_v<Place> && !std::is_same_v<T, std::string_view>)
                while (at_ != end_ && *at_ == nullptr)
                    ++at_;
        }
        Place* at_ = nullptr;
        Place* end_ = nullptr;
    };

    // Of `count` places.
    element_range(Place* first, size_t count) noexcept : first_(first), end_(count != 0 ? first + count : first) {}
    iterator begin() const noexcept { return {first_, end_}; }
    iterator end() const noexcept { return {end_, end_}; }
    // Whether there is no value.
    bool empty() const noexcept { return begin() == end(); }

private:
    Place* first_;
    Place* end_;
};

// How many places the array of a list, or slots, have; of an optional record 1 when it is there.
template <class S, class M>
size_t element_count(const S& structure, M S::*member) noexcept {
    const field* const field = find_field(record<S>::type, offset_of(structure, member));
    if (field == nullptr) return 0;
    if (field->held == holding::optional) return value_at(*field, &structure) != nullptr ? 1 : 0;
    return place_count(*field, &structure);
}

// elements gives the range of a list, of the slots that are used, or of an optional record. A null array has none,
// whatever is counted. Texts are given as std::string_view, null ones empty; structures that are const as const.
template <class S, class E, std::enable_if_t<!std::is_same_v<E, char> && !std::is_pointer_v<E>, int> = 0>
auto elements(S& structure, E* std::remove_const_t<S>::*list) noexcept {
    using T = std::conditional_t<std::is_const_v<S>, const E, E>;
    return element_range<T&, T>(structure.*list, element_count(structure, list));
}
template <class S>
auto elements(S& structure, char** std::remove_const_t<S>::*list) noexcept {
    return element_range<std::string_view, char* const>(structure.*list, element_count(structure, list));
}
template <class S, class R, std::enable_if_t<is_described<R>::value, int> = 0>
auto elements(S& structure, R** std::remove_const_t<S>::*list) noexcept {
    using T = std::conditional_t<std::is_const_v<S>, const R, R>;
    return element_range<T&, R* const>(structure.*list, element_count(structure, list));
}
template <class S, class R, size_t N>
auto elements(S& structure, R* (std::remove_const_t<S>::*slots)[N]) noexcept {
    using T = std::conditional_t<std::is_const_v<S>, const R, R>;
    return element_range<T&, R* const>(structure.*slots, N);
}

}  // namespace zr
