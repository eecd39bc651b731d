#include "asn1/codec/value_reader.h"

#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/object.h"
#include "asn1/asnbase/octetstring.h"
#include "asn1/ber.h"

namespace zr {

namespace {

zr_r_buffer_t cursor_of(const input& in) {
    return {const_cast<unsigned char*>(in.at), static_cast<unsigned int>(in.left())};
}

input input_of(const zr_r_buffer_t& cursor) { return {cursor.current(), cursor.current() + cursor.remaining()}; }

constexpr unsigned int primitive = 1;
constexpr unsigned int constructed = 2;
constexpr unsigned int indefinite = 4;

// What asnread does up to the contents of a mandatory value with a universal tag.
struct value_header {
    bool is_constructed;
    bool is_indefinite;
    unsigned int length;
};
int read_header(zr_r_buffer_t& cursor, unsigned int tag, unsigned int permitted, value_header& value) {
    ber_header header{};
    if (int status = read_identifier(cursor, header)) return status;
    if (header.tag != tag || header.cls != 0) return zr_err_no_match;
    value.is_constructed = header.constructed != 0;
    if (value.is_constructed && (permitted & constructed) == 0) return zr_err_constructed_form;
    if (!value.is_constructed && (permitted & primitive) == 0) return zr_err_primitive_form;
    bool definite = true;
    if (int status = read_length(cursor, definite, value.length)) return status;
    value.is_indefinite = !definite;
    if (!definite && (permitted & indefinite) == 0) return zr_err_indefinite_length;
    return value.length > cursor.remaining() ? zr_err_data_ends_early : 0;
}

int skip_end_of_contents(zr_r_buffer_t& cursor) {
    if (check_EOC(cursor) == 0) return zr_err_bad_contents;
    cursor.move_to(cursor.current() + 2, cursor.remaining() - 2);
    return 0;
}

// Copies the contents of a string, as many as there is room for.
struct string_copier final : segment_sink {
    string_copier(void* first, uint64_t most) : to(static_cast<unsigned char*>(first)), room(most) {}
    int on_segment(const unsigned char* octets, unsigned int length) override {
        const size_t count = length < room ? length : static_cast<size_t>(room);
        if (count != 0) std::memcpy(to, octets, count);
        to += count;
        room -= count;
        return 0;
    }

    unsigned char* to;
    uint64_t room;
};

struct segment_counter final : segment_sink {
    int on_segment(const unsigned char*, unsigned int length) override {
        octets += length;
        return 0;
    }

    uint64_t octets = 0;
};

// Where a string goes.
class string_target {
public:
    // Called once with the length of the contents: where they go, null for nowhere.
    virtual void* make_room(uint64_t length) = 0;

protected:
    ~string_target() = default;
};

// Reads a string with a universal tag in any form, at most `most` octets of it.
int read_string(input& in, unsigned int tag, string_target& target, uint64_t most = UINT64_MAX) {
    zr_r_buffer_t cursor = cursor_of(in);
    value_header value{};
    if (int status = read_header(cursor, tag, primitive | constructed | indefinite, value)) return status;
    const auto copy_to = [most](void* room) { return string_copier(room, room != nullptr ? most : 0); };
    if (value.is_constructed) {
        zr_r_buffer_t first(cursor);
        segment_counter counted;
        if (int status = walk_segments(first, value.is_indefinite, value.length, 4, counted)) return status;
        string_copier copier = copy_to(target.make_room(counted.octets));
        if (int status = walk_segments(cursor, value.is_indefinite, value.length, 4, copier)) return status;
    } else {
        unsigned char* octets = nullptr;
        if (!cursor.take(value.length, octets)) return zr_err_data_ends_early;
        if (value.is_indefinite && check_EOC(cursor) == 0) return zr_err_bad_contents;
        copy_to(target.make_room(value.length)).on_segment(octets, value.length);
    }
    if (value.is_indefinite) {
        if (int status = skip_end_of_contents(cursor)) return status;
    }
    in = input_of(cursor);
    return 0;
}

// `before` octets of the block stay free before the text.
struct text_target final : string_target {
    explicit text_target(char*& text, size_t octets_before = 0) : made(text), before(octets_before) {}
    void* make_room(uint64_t octets) override {
        length = static_cast<uint32_t>(octets);
        const uint64_t all = before + octets + 1;
        made = all <= SIZE_MAX ? static_cast<char*>(std::malloc(static_cast<size_t>(all))) : nullptr;
        if (made == nullptr) return nullptr;
        made[all - 1] = 0;
        return made + before;
    }

    char*& made;
    size_t before;
    uint32_t length = 0;
};

struct stored_text_target final : string_target {
    explicit stored_text_target(char*& text) : made(text) {}
    void* make_room(uint64_t length) override {
        const bool empty = length < 2;
        const size_t kept = empty ? 0 : static_cast<size_t>(length);
        made = length < SIZE_MAX ? static_cast<char*>(std::malloc(kept + 1)) : nullptr;
        if (made == nullptr) throw_stored_text_memory_error();
        made[kept] = 0;
        return empty ? nullptr : made;
    }

    char*& made;
};

struct octets_target final : string_target {
    octets_target(unsigned char*& data, uint32_t& length) : made(data), count(length) {}
    void* make_room(uint64_t length) override {
        if (length == 0) return nullptr;
        made = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(length)));
        failed = made == nullptr;
        if (!failed) count = static_cast<uint32_t>(length);
        return made;
    }

    unsigned char*& made;
    uint32_t& count;
    bool failed = false;
};

struct fixed_target final : string_target {
    fixed_target(unsigned char* to, uint32_t octets) : room(to), size(octets) {}
    void* make_room(uint64_t) override { return std::memset(room, 0, size); }

    unsigned char* room;
    uint32_t size;
};

struct no_target final : string_target {
    void* make_room(uint64_t) override { return nullptr; }
};

}  // namespace

bool skip_string(input& in) {
    const unsigned int tag = in.at[0] & 0x1F;
    no_target nowhere;
    return (tag == 4 || tag == 12) && read_string(in, tag, nowhere) == 0;
}

int enter_sequence(input& in, scope& entered) {
    zr_r_buffer_t cursor = cursor_of(in);
    value_header value{};
    if (int status = read_header(cursor, 16, constructed | indefinite, value)) return status;
    in = input_of(cursor);
    entered = {static_cast<uint32_t>(in.left() - value.length), value.is_indefinite};
    if (!value.is_indefinite) in.end = in.at + value.length;
    return 0;
}

bool step_into_definite(input& in) {
    zr_r_buffer_t cursor = cursor_of(in);
    ber_header header{};
    bool definite = true;
    unsigned int length = 0;
    if (read_identifier(cursor, header) != 0 || read_length(cursor, definite, length) != 0) return false;
    if (!definite || length > cursor.remaining()) return false;
    in = {cursor.current(), cursor.current() + length};
    return true;
}

bool at_end(const input& in, const scope& entered) {
    if (!entered.indefinite) return in.at == in.end;
    return in.left() >= 2 && in.at[0] == 0 && in.at[1] == 0;
}

int leave_sequence(input& in, const scope& entered) {
    if (entered.indefinite) {
        if (!at_end(in, entered)) return zr_err_bad_contents;
        in.at += 2;
        return 0;
    }
    if (in.at != in.end) return zr_err_trailing_data;
    in.end = in.at + entered.after;
    return 0;
}

bool next_is(const input& in, unsigned char tag) {
    zr_r_buffer_t cursor = cursor_of(in);
    ber_header header{};
    return in.at != in.end && read_identifier(cursor, header) == 0 && header.tag == tag && header.cls == 0;
}

int read_primitive(input& in, unsigned char tag, input& contents) {
    zr_r_buffer_t cursor = cursor_of(in);
    value_header value{};
    if (int status = read_header(cursor, tag, primitive, value)) return status;
    unsigned char* octets = nullptr;
    if (!cursor.take(value.length, octets)) return zr_err_data_ends_early;
    contents = {octets, octets + value.length};
    in = input_of(cursor);
    return 0;
}

bool skip_null(input& in) {
    input behind = in;
    input contents{};
    if (read_primitive(behind, 5, contents) != 0 || contents.left() != 0) return false;
    in = behind;
    return true;
}

int read_integer(input& in, int32_t& value) {
    const int status = read_fitting_integer(in, value);
    return status != zr_err_integer_too_long ? status : 0;
}

int read_fitting_integer(input& in, int32_t& value) {
    input contents{};
    if (int status = read_primitive(in, 2, contents)) return status;
    // 0 stands for contents that fit no 32 bits (zrasn_integer).
    if (fold_integer(contents.at, contents.left(), value)) return 0;
    value = 0;
    return zr_err_integer_too_long;
}

int read_text(input& in, char*& text) {
    text_target target(text);
    return read_string(in, 12, target);
}

int read_marked_text(input& in, char*& block, uint32_t at) {
    text_target target(block, sizeof(text_mark));
    const int status = read_string(in, 12, target);
    const text_mark mark{at, target.length};
    if (block != nullptr) store(block, mark);
    return status;
}

int read_stored_text(input& in, char*& text) {
    stored_text_target target(text);
    return read_string(in, 4, target);
}

int read_octets(input& in, unsigned char*& data, uint32_t& length) {
    octets_target target(data, length);
    const int status = read_string(in, 4, target);
    return status == 0 && target.failed ? zr_err_out_of_memory : status;
}

int read_fixed_octets(input& in, unsigned char* to, uint32_t size) {
    fixed_target target(to, size);
    return read_string(in, 4, target, size);
}

uint32_t count_elements(const unsigned char* at, const unsigned char* end) {
    uint32_t count = 0;
    while (at != end) {
        ++count;
        const auto left = static_cast<size_t>(end - at);
        if (left < 2 || (at[0] & 0x1F) == 0x1F) break;
        size_t length = at[1];
        size_t header = 2;
        if (length >= 0x80) {
            size_t octets = length & 0x7F;
            if (octets == 0 || octets > 4 || octets > left - 2) break;
            header += octets;
            if (left >= 6) {
                length = load_big_endian(at + 2) >> (32 - 8 * octets);
            } else {
                for (length = 0; octets != 0; --octets)
                    length = length << 8 | at[header - octets];
            }
        }
        if (length > left - header) break;
        at += header + length;
    }
    return count;
}

void throw_memory_error(const char* file) { throw_out_of_memory("ASN: Memory error", file); }
void throw_optional_memory_error(const char* file) { throw_out_of_memory("ASN: Out of memory", file); }
void throw_stored_text_memory_error() { throw_out_of_memory("Out of memory get_strvalue()", "src/asn1/asnutils"); }
void throw_body_memory_error() { throw_out_of_memory("Out of memory get_obj_body()", "src/asn1/asn_yvobjs"); }

}  // namespace zr
