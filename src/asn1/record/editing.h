// Changing a structure of any record by its list of fields, with blocks as a decode makes them: what was put in is
// released with the structure, and what is replaced or erased is released at once, overwritten if it was secret.
//
// A member is named by its offset in the structure. All return 0 or, with everything as it was and not a word printed,
//   275062885 (zr_err_out_of_memory)  memory ended, the count or the slots hold no more, or a structure to be copied
//                                     has a null element in an array of pointers
//   275063196 (zr_err_bad_argument)   no such element; a text with a zero octet; a member that holds no such value
// Programs call them by zrasn/edit.h, which knows the types.
#pragma once

#include <cstddef>

#include "asn1/record/record_type.h"

namespace zr {

// The field whose member lies there; null when none does.
[[nodiscard]] ZR_API const field* find_field(const record_type& type, size_t member) noexcept;

// What goes into a place. Which of these count, the field's kind of value says.
struct new_value {
    const void* at;    // characters of a text, octets, an integer of the member's type, or a structure
    size_t length;     // of a text or of octets
    bool handed_over;  // the blocks of the structure go into the place, if the call succeeds; else they are copied
};

// An index: where a list ends.
constexpr size_t behind_the_last = SIZE_MAX;

// Replaces the value of a member, or of an element or slot of it. What lies in the structure itself may be put in too.
[[nodiscard]] ZR_API int set_value(const record_type& type, size_t member, void* structure, size_t index,
                                   const new_value& value) noexcept;

// Puts a value before element `index` of a list, or behind its last. Of slots only behind the last used one.
[[nodiscard]] ZR_API int insert_value(const record_type& type, size_t member, void* structure, size_t index,
                                      const new_value& value) noexcept;

// Takes `count` elements out of a list, from `index` on; of slots, empties them. An optional value has one place: 0.
// Does not fail but for a range that is not there.
[[nodiscard]] ZR_API int erase_values(const record_type& type, size_t member, void* structure, size_t index,
                                      size_t count) noexcept;

}  // namespace zr
