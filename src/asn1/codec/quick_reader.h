// Reading single values in the form that the library writes: the identifier in one octet, the length definite and in at
// most four octets, strings in one piece. A value of another form is handed to the general readers
// (asn1/codec/value_reader.h), so that it costs no more than itself. Returned is where the value ends; null for octets
// that are refused, and for indefinite lengths of anything but strings.
//
// A strict reader gives null for all that the library would not write, and for texts with a zero octet or not in UTF-8.
// A local reader converts texts to the local code set as it stores them.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "asn1/ber.h"
#include "asn1/codec/copy.h"
#include "asn1/export.h"
#include "asn1/record/packed_blocks.h"

namespace zr {

// A position in the octets. It is passed and returned by value, so that it stays in a register.
using octet_position = const unsigned char*;

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

class text_conversion;

// Where blocks come from: malloc, unless a pointer to packed_blocks or strict_blocks goes all the way down. The blocks
// of a local reader come from malloc too.
struct ZR_API strict_blocks {
    packed_blocks* packed;  // null for malloc
};
template <class... Blocks>
constexpr bool is_strict = (std::is_same_v<Blocks, strict_blocks> || ...);
struct ZR_API local_blocks {
    text_conversion* conversion;
};
template <class... Blocks>
constexpr bool is_local = (std::is_same_v<Blocks, local_blocks> || ...);

// What the readers of a header do with the forms that they do not know: they give null, or leave them to odd_contents.
enum class other_forms { none, read, strictly_none };

// Steps over the header of a value with the identifier and returns where its contents begin; `stop` gets where they
// end.
template <other_forms Others = other_forms::read>
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
            if constexpr (Others != other_forms::read) return nullptr;
            const found_contents found = odd_contents(at - 2, end, identifier);
            stop = found.stop;
            return found.at;
        }
        length = load_big_endian(at) >> (32 - 8 * count);
        at += count;
        // Fewer octets would do.
        if (Others == other_forms::strictly_none && (length < 0x80 || length >> (8 * (count - 1)) == 0)) return nullptr;
    }
    if (length > static_cast<size_t>(end - at)) return nullptr;
    stop = at + length;
    return at;
}

// The header of a SEQUENCE.
template <class... Blocks>
ZR_INLINE octet_position quick_sequence(octet_position at, octet_position end, octet_position& stop) {
    constexpr other_forms others = is_strict<Blocks...> ? other_forms::strictly_none : other_forms::read;
    return quick_contents<others>(at, end, id_sequence, stop);
}

// An INTEGER of one to four contents octets, which end at `stop`. Four octets are loaded, whatever their number: before
// the contents of a field there are always its own header and the record's, four octets at least.
struct short_integer {
    ZR_INLINE short_integer(octet_position stop, size_t count)
        : unused(32 - 8 * static_cast<unsigned int>(count)),
          bits(static_cast<int32_t>(load_big_endian(stop - 4) << unused)) {}
    int32_t value() const { return bits >> unused; }
    // Whether fewer octets would do: the first nine bits are alike (X.690 8.3.2).
    bool is_padded() const { return unused != 24 && (bits >> 23 == 0 || bits >> 23 == -1); }

    unsigned int unused;
    int32_t bits;
};

template <class... Blocks>
ZR_INLINE octet_position quick_integer(octet_position at, octet_position end, int32_t& value) {
    const auto left = static_cast<size_t>(end - at);
    if (__builtin_expect(left < 3 || at[0] != id_integer || at[1] - 1u >= 4 || at[1] > left - 2, 0)) {
        if constexpr (is_strict<Blocks...>) return nullptr;
        const found_integer found = odd_integer(at, end);
        value = static_cast<int32_t>(found.value);
        return found.behind;
    }
    const size_t count = at[1];
    at += 2 + count;
    const short_integer read(at, count);
    if (is_strict<Blocks...> && read.is_padded()) return nullptr;
    value = read.value();
    return at;
}

// Room for a block; null when memory is out.
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets) {
    return std::malloc(octets);
}
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets, packed_blocks* blocks) {
    return blocks->allocate<Alignment>(octets);
}
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets, strict_blocks blocks) {
    return blocks.packed == nullptr ? std::malloc(octets) : blocks.packed->allocate<Alignment>(octets);
}
template <size_t Alignment>
ZR_INLINE void* allocate(size_t octets, local_blocks) {
    return std::malloc(octets);
}

// Where blocks do not come from malloc, a string in segments of segments and the like gives null; a local reader gives
// it for such a text.

// The text gets a terminating zero. It is null when memory is out, and that is no failure; where blocks do not come
// from malloc it is, with zr_asn_memexception. A local reader throws what the conversion throws.
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

template <uint32_t Size, class... Blocks>
ZR_INLINE octet_position quick_fixed_octets(octet_position at, octet_position end, unsigned char* to) {
    static_assert(Size < 0x80);
    if (static_cast<size_t>(end - at) < 2 + Size || at[0] != id_octet_string || at[1] != Size) {
        if constexpr (is_strict<Blocks...>) return nullptr;
        return odd_fixed_octets(at, end, to, Size);
    }
    copy_fixed<Size>(to, at + 2);
    return at + 2 + Size;
}

}  // namespace zr
