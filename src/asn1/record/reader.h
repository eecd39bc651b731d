// Reading BER straight from the octets: the same statuses, consumed octets and odd forms as the object tree has, with a
// short way for what the library writes itself.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/status.h"
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
};

// A constructed value that has been entered: what its enclosing level has left behind it, unless the length is
// indefinite.
struct scope {
    size_t after;
    bool indefinite;
};

// The general readers, for whatever is not in the form that the library writes. They follow zr_asn_object::asnread step
// by step.
int enter_sequence_slow(input& in, scope& entered);
int leave_indefinite(input& in);
bool ends_slow(const input& in);
bool next_is_sequence_slow(const input& in);
bool skip_null_slow(input& in);
int read_integer_slow(input& in, int32_t& value);
int read_text_slow(input& in, char*& text);
// `limit` octets at most go to `fixed` when that is not null (the rest of it is zero), else to a new block.
int read_octets_slow(input& in, unsigned char*& data, uint32_t& length, unsigned char* fixed, uint32_t limit);

// How many elements the contents at `in` have, as far as their headers tell: none is looked into.
uint32_t count_elements(const input& in);

// They keep the throw out of the readers.
[[noreturn]] void throw_memory_error(const char* file);
[[noreturn]] void throw_optional_memory_error(const char* file);

// enter_sequence steps over the header of a SEQUENCE and narrows `in` to its contents.
inline int enter_sequence(input& in, scope& entered) {
    const unsigned char* at = in.at;
    const size_t left = in.left();
    if (left < 2 || at[0] != id_sequence) return enter_sequence_slow(in, entered);
    size_t length = at[1];
    size_t header = 2;
    if (length >= 0x80) {
        if (left < 5) return enter_sequence_slow(in, entered);
        header = length - 0x7E;
        if (length == 0x81) {
            length = at[2];
        } else if (length == 0x82) {
            length = size_t{at[2]} << 8 | at[3];
        } else if (length == 0x83) {
            length = size_t{at[2]} << 16 | size_t{at[3]} << 8 | at[4];
        } else {
            return enter_sequence_slow(in, entered);
        }
    }
    if (length > left - header) return zr_err_data_ends_early;
    in.at = at + header;
    in.end = in.at + length;
    entered = {left - header - length, false};
    return 0;
}

// Whether the contents end here.
inline bool at_end(const input& in, const scope& entered) {
    return entered.indefinite ? ends_slow(in) : in.at == in.end;
}

// leave_sequence checks that the contents end here and widens `in` to the enclosing level.
inline int leave_sequence(input& in, const scope& entered) {
    if (entered.indefinite) return leave_indefinite(in);
    if (in.at != in.end) return zr_err_trailing_data;
    in.end = in.at + entered.after;
    return 0;
}

// Loads the four octets that end with the contents: a field of a record always has its own header and the record's
// before it.
inline int read_integer(input& in, int32_t& value) {
    const unsigned char* at = in.at;
    const size_t left = in.left();
    if (left < 3 || at[0] != id_integer) return read_integer_slow(in, value);
    const size_t count = at[1];
    if (count - 1 >= 4 || count > left - 2) return read_integer_slow(in, value);
    in.at = at + 2 + count;
    uint32_t octets = 0;
    std::memcpy(&octets, in.at - 4, 4);
    const unsigned int unused = 32 - 8 * static_cast<unsigned int>(count);
    value = static_cast<int32_t>(__builtin_bswap32(octets) << unused) >> unused;
    return 0;
}

// Whether a primitive value with a short length and the identifier given is next; steps over its header then.
inline bool quick_header(input& in, unsigned char identifier, uint32_t& length) {
    const size_t left = in.left();
    if (left < 2 || in.at[0] != identifier) return false;
    const uint32_t count = in.at[1];
    if (count >= 0x80) {
        if (count != 0x81 || left < 3 || in.at[2] > left - 3) return false;
        length = in.at[2];
        in.at += 3;
        return true;
    }
    if (count > left - 2) return false;
    length = count;
    in.at += 2;
    return true;
}

// The text gets a malloc block with a terminating zero; it is null when memory is out, and that is no failure.
inline int read_text(input& in, char*& text) {
    uint32_t length = 0;
    if (!quick_header(in, id_utf8_string, length)) return read_text_slow(in, text);
    text = static_cast<char*>(std::malloc(size_t{length} + 1));
    if (text != nullptr) {
        copy_octets(reinterpret_cast<unsigned char*>(text), in.at, length);
        text[length] = 0;
    }
    in.at += length;
    return 0;
}

// No block is made for an empty byte string.
inline int read_octets(input& in, unsigned char*& data, uint32_t& length, const char* file) {
    uint32_t count = 0;
    if (!quick_header(in, id_octet_string, count)) {
        const int status = read_octets_slow(in, data, length, nullptr, 0);
        if (status == zr_err_out_of_memory) throw_memory_error(file);
        return status;
    }
    if (count != 0) {
        data = static_cast<unsigned char*>(std::malloc(count));
        if (data == nullptr) throw_memory_error(file);
        length = count;
        copy_octets(data, in.at, count);
        in.at += count;
    }
    return 0;
}

inline int read_fixed_octets(input& in, unsigned char* to, uint32_t size) {
    if (in.left() >= 2 + size_t{size} && in.at[0] == id_octet_string && in.at[1] == size) {
        std::memcpy(to, in.at + 2, size);
        in.at += 2 + size_t{size};
        return 0;
    }
    unsigned char* none = nullptr;
    uint32_t length = 0;
    return read_octets_slow(in, none, length, to, size);
}

inline bool next_is_sequence(const input& in) {
    return in.at != in.end && (in.at[0] == id_sequence || next_is_sequence_slow(in));
}

}  // namespace zr
