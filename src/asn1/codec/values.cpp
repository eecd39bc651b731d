#include "asn1/codec/values.h"

#include <algorithm>
#include <cstring>

#include "asn1/record/members.h"

namespace zr {

namespace {

// The universal tags of the values (X.680 8.4).
enum universal_tag : unsigned char { tag_integer = 2, tag_octet_string = 4, tag_utf8_string = 12, tag_sequence = 16 };

// Values in the library's own form are many among others too.
bool step(input& in, octet_position behind) {
    if (behind == nullptr) return false;
    in.at = behind;
    return true;
}

void* duplicate(const void* octets, size_t count, packed_blocks* blocks, const char* module) {
    void* made = blocks != nullptr ? allocate<1>(count, blocks) : std::malloc(count);
    if (made == nullptr) throw_memory_error(module);
    return std::memcpy(made, octets, count);
}

template <class T>
int order_of(T left, T right) {
    return left < right ? -1 : left > right ? 1 : 0;
}

int order_octets(const void* left, const void* right, uint32_t left_length, uint32_t right_length) {
    const uint32_t common = std::min(left_length, right_length);
    const int order = common != 0 ? std::memcmp(left, right, common) : 0;
    return order != 0 ? order : order_of(left_length, right_length);
}

}  // namespace

unsigned char tag_of_value(value_kind value) {
    switch (value) {
        case value_kind::integer:
        case value_kind::version:
            return tag_integer;
        case value_kind::text:
            return tag_utf8_string;
        case value_kind::stored_text:
        case value_kind::octets:
        case value_kind::fixed_octets:
            return tag_octet_string;
        case value_kind::record:
            break;
    }
    return tag_sequence;
}

int read_value(input& in, const field& field, void* structure, void* where, unsigned char& tag, const char* module) {
    switch (field.value) {
        case value_kind::integer: {
            int32_t value = 0;
            tag = tag_integer;
            const int status = step(in, quick_integer(in.at, in.end, value)) ? 0 : read_integer(in, value);
            store_integer(where, field.integer, value);
            return status;
        }
        case value_kind::version: {
            int32_t any = 0;
            tag = tag_integer;
            return step(in, quick_integer(in.at, in.end, any)) ? 0 : read_integer(in, any);
        }
        case value_kind::text: {
            auto& text = place<char*>(where, 0);
            tag = tag_utf8_string;
            return step(in, quick_text(in.at, in.end, text)) ? 0 : read_text(in, text);
        }
        case value_kind::stored_text: {
            auto& text = place<char*>(where, 0);
            tag = tag_octet_string;
            return step(in, quick_stored_text(in.at, in.end, text)) ? 0 : read_stored_text(in, text);
        }
        case value_kind::octets: {
            auto& data = place<unsigned char*>(where, 0);
            auto& length = place<uint32_t>(structure, field.count_offset);  // set as soon as there is a block
            const bool optional = field.held == holding::optional;
            tag = tag_octet_string;
            const bool quick = step(in, optional ? quick_optional_octets(in.at, in.end, data, length)
                                                 : quick_octets(in.at, in.end, data, length, module));
            const int status = quick ? 0 : read_octets(in, data, length);
            if (status == zr_err_out_of_memory) optional ? throw_body_memory_error() : throw_memory_error(module);
            return status;
        }
        case value_kind::fixed_octets:
            tag = tag_octet_string;
            return read_fixed_octets(in, static_cast<unsigned char*>(where), field.size);
        case value_kind::record:
            break;
    }
    tag = tag_sequence;
    return zr_err_unsupported;
}

void drop_value(const field& field, void* where) {
    if (has_block(field.value)) std::free(place<void*>(where, 0));
}

void copy_value(const field& field, const void* from, const void* from_where, void* to, void* to_where,
                packed_blocks* blocks, const char* module) {
    switch (field.value) {
        case value_kind::integer:
            std::memcpy(to_where, from_where, field.integer.octets);
            break;
        case value_kind::version:
            break;
        case value_kind::text:
        case value_kind::stored_text:
            if (const char* text = place<const char*>(from_where, 0)) {
                place<void*>(to_where, 0) = duplicate(text, std::strlen(text) + 1, blocks, module);
            } else if (blocks != nullptr) {
                throw_memory_error(module);  // a text that was read is null only when it has found none
            }
            break;
        case value_kind::octets:
            if (const uint32_t length = octets_length(field, from)) {
                place<void*>(to_where, 0) = duplicate(place<const void*>(from_where, 0), length, blocks, module);
                store_count(field, to, length);
            }
            break;
        case value_kind::fixed_octets:
            std::memcpy(to_where, from_where, field.size);
            break;
        case value_kind::record:
            break;
    }
}

int order_values(const field& field, const void* left, const void* left_where, const void* right,
                 const void* right_where) {
    switch (field.value) {
        case value_kind::integer: {
            const int32_t one = load_integer(left_where, field.integer);
            const int32_t other = load_integer(right_where, field.integer);
            if (field.integer.is_signed) return order_of(one, other);
            return order_of(static_cast<uint32_t>(one), static_cast<uint32_t>(other));
        }
        case value_kind::version:
            break;
        case value_kind::text:
        case value_kind::stored_text:
            return std::strcmp(text_in(left_where), text_in(right_where));
        case value_kind::octets:
            return order_octets(place<const void*>(left_where, 0), place<const void*>(right_where, 0),
                                octets_length(field, left), octets_length(field, right));
        case value_kind::fixed_octets:
            return std::memcmp(left_where, right_where, field.size);
        case value_kind::record:
            break;
    }
    return 0;
}

uint64_t guess_value_octets(const field& field, const void* structure, const void* where) {
    switch (field.value) {
        case value_kind::integer:
        case value_kind::version:
        case value_kind::fixed_octets:
            return 4;
        case value_kind::text:
        case value_kind::stored_text:
            return 4 + std::strlen(text_in(where));
        case value_kind::octets:
            return octets_length(field, structure);
        case value_kind::record:
            break;
    }
    return 0;
}

}  // namespace zr
