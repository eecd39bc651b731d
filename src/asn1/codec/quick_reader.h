// Reading single values in the form that the library writes: the identifier in one octet, the length definite and in at
// most four octets, strings in one piece. A value of another form is handed to the general readers
// (asn1/codec/value_reader.h), so that it costs no more than itself. Returned is where the value ends; null for octets
// that are refused, and for indefinite lengths of anything but strings.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/ber.h"
#include "asn1/codec/copy.h"
#include "asn1/export.h"
#include "asn1/record/packed_blocks.h"

namespace zr {

// A position in the octets. It is passed and returned by value, so that it stays in a register.
using octet_position = const unsigned char*;

inline uint32_t load_big_endian(octet_position at) {
    uint32_t octets = 0;
    std::memcpy(&octets, at, sizeof octets);
    return __builtin_bswap32(octets);
}

// The same for other forms. What they find comes back in registers, so that the quick readers keep theirs.
struct found_contents {
    octet_position at;
    octet_position stop;
};
ZR_CODEC_API found_contents odd_contents(octet_position at, octet_position end, unsigned char identifier);
struct found_integer {
    octet_position behind;
    intptr_t value;
};
ZR_CODEC_API found_integer odd_integer(octet_position at, octet_position end);
ZR_CODEC_API octet_position odd_fixed_octets(octet_position at, octet_position end, unsigned char* to, uint32_t size);

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
        if (__builtin_expect(count - 1 >= 4 || left < 6, 0)) {
            const found_contents found = odd_contents(at - 2, end, identifier);
            stop = found.stop;
            return found.at;
        }
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
    if (__builtin_expect(left < 3 || at[0] != id_integer || at[1] - 1u >= 4 || at[1] > left - 2, 0)) {
        const found_integer found = odd_integer(at, end);
        value = static_cast<int32_t>(found.value);
        return found.behind;
    }
    const size_t count = at[1];
    at += 2 + count;
    const unsigned int unused = 32 - 8 * static_cast<unsigned int>(count);
    value = static_cast<int32_t>(load_big_endian(at - 4) << unused) >> unused;
    return at;
}

// Room from malloc, or in the blocks of a packed structure; null when memory is out.
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets) {
    return std::malloc(octets);
}
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets, packed_blocks* blocks) {
    return blocks->allocate<Alignment>(octets);
}

// `blocks` is nothing, or a pointer to packed_blocks; then an odd string gives null.

// The text gets a terminating zero. It is null when memory is out, and that is no failure; in a packed structure it is,
// with zr_asn_memexception.
template <class... Blocks>
ZR_CODEC_API octet_position quick_text(octet_position at, octet_position end, char*& text, Blocks... blocks);

// A text that is stored with its zero octet ends in one zero octet more; contents of fewer than two octets are the
// empty text. Throws zr_asn_memexception ("Out of memory get_strvalue()") when memory is out.
template <class... Blocks>
ZR_CODEC_API octet_position quick_stored_text(octet_position at, octet_position end, char*& text, Blocks... blocks);

// An empty byte string takes no room. Throws zr_asn_memexception for `file` when memory is out.
template <class... Blocks>
ZR_CODEC_API octet_position quick_octets(octet_position at, octet_position end, unsigned char*& data, uint32_t& length,
                                         const char* file, Blocks... blocks);
// The same of an optional one that is there; the message is "Out of memory get_obj_body()".
template <class... Blocks>
ZR_CODEC_API octet_position quick_optional_octets(octet_position at, octet_position end, unsigned char*& data,
                                                  uint32_t& length, Blocks... blocks);

template <uint32_t Size>
ZR_INLINE octet_position quick_fixed_octets(octet_position at, octet_position end, unsigned char* to) {
    static_assert(Size < 0x80);
    if (static_cast<size_t>(end - at) < 2 + Size || at[0] != id_octet_string || at[1] != Size)
        return odd_fixed_octets(at, end, to, Size);
    copy_fixed<Size>(to, at + 2);
    return at + 2 + Size;
}

}  // namespace zr
