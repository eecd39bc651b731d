// Reading single values in the form that the library writes: the identifier in one octet, the length definite and in at
// most four octets, strings in one piece. The quick readers return where the value ends, or null for anything else,
// refused octets among it; the general readers (asn1/codec/value_reader.h) tell then what it is.
#pragma once

#include <cstdint>
#include <cstring>

#include "asn1/ber.h"
#include "asn1/codec/copy.h"

namespace zr {

// A position in the octets. It is passed and returned by value, so that it stays in a register.
using octet_position = const unsigned char*;

inline uint32_t load_big_endian(octet_position at) {
    uint32_t octets = 0;
    std::memcpy(&octets, at, sizeof octets);
    return __builtin_bswap32(octets);
}

// Steps over the header of a value with the identifier and returns where its contents begin; `stop` gets where they
// end.
ZR_INLINE octet_position quick_contents(octet_position at, octet_position end, unsigned char identifier,
                                        octet_position& stop) {
    const auto left = static_cast<size_t>(end - at);
    if (left < 2 || at[0] != identifier) return nullptr;
    size_t length = at[1];
    at += 2;
    if (length >= 0x80) {
        // A long form that is needed has octets enough behind it.
        const size_t count = length - 0x80;
        if (count - 1 >= 4 || left < 6) return nullptr;
        length = load_big_endian(at) >> (32 - 8 * count);
        at += count;
    }
    if (length > static_cast<size_t>(end - at)) return nullptr;
    stop = at + length;
    return at;
}

// Reads an INTEGER of one to four contents octets. It loads the four octets that end with the contents, whatever their
// number: before the contents of a field there are always its own header and the record's, four octets at least.
ZR_INLINE octet_position quick_integer(octet_position at, octet_position end, int32_t& value) {
    const auto left = static_cast<size_t>(end - at);
    if (left < 3 || at[0] != id_integer) return nullptr;
    const size_t count = at[1];
    if (count - 1 >= 4 || count > left - 2) return nullptr;
    at += 2 + count;
    const unsigned int unused = 32 - 8 * static_cast<unsigned int>(count);
    value = static_cast<int32_t>(load_big_endian(at - 4) << unused) >> unused;
    return at;
}

// The text gets a malloc block with a terminating zero; it is null when memory is out, and that is no failure.
octet_position quick_text(octet_position at, octet_position end, char*& text);

// A text that is stored with its zero octet gets a block that ends in one zero octet more; contents of fewer than two
// octets are the empty text. Throws zr_asn_memexception ("Out of memory get_strvalue()") when memory is out.
octet_position quick_stored_text(octet_position at, octet_position end, char*& text);

// No block is made for an empty byte string. Throws zr_asn_memexception for `file` when memory is out.
octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                            const char* file);
// The same of an optional one that is there; the message is "Out of memory get_obj_body()".
octet_position quick_optional_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length);

template <uint32_t Size>
ZR_INLINE octet_position quick_fixed_octets(octet_position at, octet_position end, unsigned char* to) {
    static_assert(Size < 0x80);
    if (static_cast<size_t>(end - at) < 2 + Size || at[0] != id_octet_string || at[1] != Size) return nullptr;
    copy_fixed<Size>(to, at + 2);
    return at + 2 + Size;
}

}  // namespace zr
