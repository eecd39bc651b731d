// Slots of virtual tables, read from pointers to member functions (Itanium C++ ABI 2.3: such a pointer to a virtual
// function holds 1 plus the function's offset in the table; on ARM the offset alone, and the lowest bit of the
// adjustment behind it tells that the function is virtual).
#pragma once

#include <cstddef>
#include <cstring>

namespace zr_test {

// slot gives the place of a virtual function in its class's table; -1 when the function is not virtual. Destructors
// have no pointers and take two places.
template <class Function>
int slot(Function function) {
    static_assert(sizeof function == 2 * sizeof(ptrdiff_t));
    ptrdiff_t words[2];
    std::memcpy(words, &function, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
    const ptrdiff_t is_virtual = words[1] & 1;
    const ptrdiff_t offset = words[0];
#else
    const ptrdiff_t is_virtual = words[0] & 1;
    const ptrdiff_t offset = words[0] - 1;
#endif
    return is_virtual == 0 ? -1 : static_cast<int>(offset / static_cast<ptrdiff_t>(sizeof(void*)));
}

// slot_count gives the number of places in the table of Class: where the next virtual function would go.
template <class Class>
int slot_count() {
    struct beyond : Class {
        using Class::Class;
        virtual void next() {}
    };
    return slot(&beyond::next);
}

}  // namespace zr_test
