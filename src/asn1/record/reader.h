// Reading BER straight from the octets: the same statuses, consumed octets and odd forms as the object tree has, with a
// short way for what the library writes itself.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/status.h"
#include "asn1/record/shape.h"
#include "asn1/record/writer.h"

namespace zr {

// An internal status: the octets are well-formed, but what they say does not fit the structure. The object tree reads
// them once more and reports it.
constexpr int beyond_structure = -2;

// input is a cursor over the octets of one level.
struct input {
    const unsigned char* at;
    const unsigned char* end;

    size_t left() const { return static_cast<size_t>(end - at); }
    // Member by member: copied as a whole, a cursor would leave its registers.
    void move_to(const input& other) {
        at = other.at;
        end = other.end;
    }
};

// A constructed value that has been entered: what its enclosing level has left behind it, unless the length is
// indefinite.
struct scope {
    size_t after;
    bool indefinite;
};

// The general readers, for whatever is not in the form that the library writes. They follow zr_asn_object::asnread step
// by step. They take and give the cursor by value: the codec keeps it in registers.
struct slow_result {
    int status;
    input in;
};
struct slow_sequence : slow_result {
    scope entered;
};
struct slow_integer : slow_result {
    int32_t value;
};
struct slow_octets : slow_result {
    unsigned char* data;
    uint32_t length;
};
slow_sequence enter_sequence_slow(const unsigned char* at, const unsigned char* end);
slow_integer read_integer_slow(const unsigned char* at, const unsigned char* end);
// The text has a terminating zero; null when memory is out.
slow_octets read_text_slow(const unsigned char* at, const unsigned char* end);
// 275062885 when memory is out. With `fixed`, `limit` octets at most go there, the rest of it is zero, and no block is
// made.
slow_octets read_octets_slow(const unsigned char* at, const unsigned char* end, unsigned char* fixed, uint32_t limit);
bool ends_slow(const unsigned char* at, const unsigned char* end);
bool next_is_sequence_slow(const unsigned char* at, const unsigned char* end);
// Steps over a NULL; the cursor stays when there is none.
input skip_null_slow(const unsigned char* at, const unsigned char* end);

// How many elements the contents at `in` have, as far as their headers tell: none is looked into.
uint32_t count_elements(const unsigned char* at, const unsigned char* end);

// They keep the throw out of the readers.
[[noreturn]] void throw_memory_error(const char* file);
[[noreturn]] void throw_optional_memory_error(const char* file);

// enter_sequence steps over the header of a SEQUENCE and narrows `in` to its contents.
ZR_INLINE int enter_sequence(input& in, scope& entered) {
    const unsigned char* at = in.at;
    const size_t left = in.left();
    size_t length = 0;
    size_t header = 2;
    bool quick = left >= 2 && at[0] == id_sequence;
    if (quick) {
        length = at[1];
        if (length >= 0x80) {
            header = length - 0x7E;
            quick = left >= 5;
            if (quick && length == 0x81) {
                length = at[2];
            } else if (quick && length == 0x82) {
                length = size_t{at[2]} << 8 | at[3];
            } else if (quick && length == 0x83) {
                length = size_t{at[2]} << 16 | size_t{at[3]} << 8 | at[4];
            } else {
                quick = false;
            }
        }
    }
    if (__builtin_expect(!quick, 0)) {
        const slow_sequence slow = enter_sequence_slow(in.at, in.end);
        in.move_to(slow.in);
        entered.after = slow.entered.after;
        entered.indefinite = slow.entered.indefinite;
        return slow.status;
    }
    if (length > left - header) return zr_err_data_ends_early;
    in.at = at + header;
    in.end = in.at + length;
    entered.after = left - header - length;
    entered.indefinite = false;
    return 0;
}

// Whether the contents end here.
ZR_INLINE bool at_end(const input& in, const scope& entered) {
    return __builtin_expect(entered.indefinite, 0) ? ends_slow(in.at, in.end) : in.at == in.end;
}

// leave_sequence checks that the contents end here and widens `in` to the enclosing level.
ZR_INLINE int leave_sequence(input& in, const scope& entered) {
    if (__builtin_expect(entered.indefinite, 0)) {
        if (!ends_slow(in.at, in.end)) return zr_err_bad_contents;
        in.at += 2;
        return 0;
    }
    if (in.at != in.end) return zr_err_trailing_data;
    in.end = in.at + entered.after;
    return 0;
}

// Loads the four octets that end with the contents: a field of a record always has its own header and the record's
// before it.
ZR_INLINE int read_integer(input& in, int32_t& value) {
    const unsigned char* at = in.at;
    const size_t left = in.left();
    if (__builtin_expect(left >= 3 && at[0] == id_integer, 1)) {
        const size_t count = at[1];
        if (__builtin_expect(count - 1 < 4 && count <= left - 2, 1)) {
            in.at = at + 2 + count;
            uint32_t octets = 0;
            std::memcpy(&octets, in.at - 4, 4);
            const unsigned int unused = 32 - 8 * static_cast<unsigned int>(count);
            value = static_cast<int32_t>(__builtin_bswap32(octets) << unused) >> unused;
            return 0;
        }
    }
    const slow_integer slow = read_integer_slow(in.at, in.end);
    in.move_to(slow.in);
    value = slow.value;
    return slow.status;
}

// Whether a primitive value with the identifier given is next, in a length that the library writes; steps over its
// header then.
ZR_INLINE bool quick_header(input& in, unsigned char identifier, size_t& length) {
    const size_t left = in.left();
    if (left < 2 || in.at[0] != identifier) return false;
    length = in.at[1];
    size_t header = 2;
    if (length >= 0x80) {
        if (length > 0x82 || length == 0x80 || left < 4) return false;
        header = length - 0x7E;
        length = length == 0x81 ? size_t{in.at[2]} : size_t{in.at[2]} << 8 | in.at[3];
    }
    if (length > left - header) return false;
    in.at += header;
    return true;
}

// The text gets a malloc block with a terminating zero; it is null when memory is out, and that is no failure.
ZR_INLINE int read_text(input& in, char*& text) {
    size_t length = 0;
    if (__builtin_expect(!quick_header(in, id_utf8_string, length), 0)) {
        const slow_octets slow = read_text_slow(in.at, in.end);
        in.move_to(slow.in);
        text = reinterpret_cast<char*>(slow.data);
        return slow.status;
    }
    auto* block = static_cast<char*>(std::malloc(length + 1));
    text = block;
    if (__builtin_expect(block != nullptr, 1)) {
        copy_octets(reinterpret_cast<unsigned char*>(block), in.at, length);
        block[length] = 0;
    }
    in.at += length;
    return 0;
}

// No block is made for an empty byte string.
ZR_INLINE int read_octets(input& in, unsigned char*& data, uint32_t& length, const char* file) {
    size_t count = 0;
    if (__builtin_expect(!quick_header(in, id_octet_string, count), 0)) {
        const slow_octets slow = read_octets_slow(in.at, in.end, nullptr, 0);
        in.move_to(slow.in);
        data = slow.data;
        length = slow.length;
        if (slow.status == zr_err_out_of_memory) throw_memory_error(file);
        return slow.status;
    }
    if (count == 0) return 0;
    auto* block = static_cast<unsigned char*>(std::malloc(count));
    if (__builtin_expect(block == nullptr, 0)) throw_memory_error(file);
    data = block;
    length = static_cast<uint32_t>(count);
    copy_octets(block, in.at, count);
    in.at += count;
    return 0;
}

template <uint32_t Size>
ZR_INLINE int read_fixed_octets(input& in, unsigned char* to) {
    if (__builtin_expect(in.left() >= 2 + Size && in.at[0] == id_octet_string && in.at[1] == Size, 1)) {
        std::memcpy(to, in.at + 2, Size);
        in.at += 2 + Size;
        return 0;
    }
    // By way of a copy, so that the structure's own octets need no address and may be read into registers.
    unsigned char taken[Size];
    const slow_octets slow = read_octets_slow(in.at, in.end, taken, Size);
    in.move_to(slow.in);
    if (slow.status == 0) std::memcpy(to, taken, Size);
    return slow.status;
}

ZR_INLINE bool next_is_sequence(const input& in) {
    return in.at != in.end && (in.at[0] == id_sequence || next_is_sequence_slow(in.at, in.end));
}

}  // namespace zr
