// What every layer has to know of the octets: identifiers of the universal types that records are made of
// (X.690 8.1.2), and what the contents of an INTEGER mean.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/byte_order.h"
#include "asn1/load.h"

namespace zr {

constexpr unsigned char id_integer = 0x02;
constexpr unsigned char id_octet_string = 0x04;
constexpr unsigned char id_null = 0x05;
constexpr unsigned char id_utf8_string = 0x0C;
constexpr unsigned char id_sequence = 0x30;

inline uint32_t load_big_endian(const unsigned char* at) { return most_significant_first(load<uint32_t>(at)); }

// fold_integer gives the 32-bit value of an INTEGER's contents (X.690 8.3), and answers false where there is none: more
// than four octets that do not begin with 00. No octets mean 0. More than four that begin with 00 are accepted, and the
// leading ones fold into the low bits: kept so.
inline bool fold_integer(const unsigned char* octets, size_t length, int32_t& value) {
    if (length > 4 && octets[0] != 0) return false;
    uint32_t bits = 0;
    for (size_t i = 0; i < length; ++i)
        bits |= uint32_t{octets[i]} << ((length - 1 - i) * 8 % 32);
    if (length != 0 && length < 4 && (octets[0] & 0x80) != 0) bits |= ~uint32_t{0} << (length * 8);
    value = static_cast<int32_t>(bits);
    return true;
}

}  // namespace zr
