// C integers of a width known at run time.
#pragma once

#include <cstring>

#include "asn1/record/field.h"

namespace zr {

// The value of a C integer of the given type; one of 32 unsigned bits as the same bits signed.
inline int32_t load_integer(const void* from, integer_type type) {
    uint32_t bits = 0;
    std::memcpy(&bits, from, type.octets);  // least significant octet first, as on every x86
    const unsigned int unused = 32u - 8u * type.octets;
    return type.is_signed ? static_cast<int32_t>(bits << unused) >> unused : static_cast<int32_t>(bits);
}

// Stores the low bits that fit.
inline void store_integer(void* to, integer_type type, int32_t value) { std::memcpy(to, &value, type.octets); }

}  // namespace zr
