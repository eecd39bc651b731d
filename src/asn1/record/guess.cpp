#include "asn1/record/guess.h"

#include <cstring>

#include "asn1/record/integers.h"

namespace zr {

namespace {

// How deep lists of a record in itself are followed.
constexpr unsigned int most_levels = 4;

// Guesses stop to grow there, so that products do not overflow.
constexpr uint64_t most_octets = 1 << 20;
uint64_t capped(uint64_t octets) { return octets < most_octets ? octets : most_octets; }

template <class T>
T load(const void* structure, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(structure) + offset, sizeof value);
    return value;
}

uint64_t guess_record(const record_type& type, const void* in, unsigned int levels);

// A record that may be missing.
uint64_t guess_pointed(const record_type& type, const void* in, unsigned int levels) {
    return in != nullptr ? guess_record(type, in, levels) : 0;
}

// The middle element of a list stands for all.
uint64_t guess_list(const record_type& type, const field& field, const void* in, unsigned int levels) {
    const auto* elements = load<const unsigned char*>(in, field.offset);
    const auto count =
        static_cast<uint32_t>(load_integer(static_cast<const unsigned char*>(in) + field.count_offset, field.count));
    if (elements == nullptr || count == 0) return 2;
    uint64_t element = 4;
    const size_t middle = count / 2;
    if (field.kind == field_kind::list_of_texts) {
        const char* text = load<const char*>(elements, middle * sizeof text);
        if (text != nullptr) element += std::strlen(text);
    } else if (field.nested == &type && (count == 1 || levels-- == 0)) {
        // A chain has as many levels as it has: one is as good a guess as another.
        element += type.typical_octets;
    } else if (field.kind == field_kind::list_of_pointers) {
        element += guess_pointed(*field.nested, load<const void*>(elements, middle * sizeof(void*)), levels);
    } else if (field.kind == field_kind::list_of_records) {
        element += guess_record(*field.nested, elements + middle * field.nested->size, levels);
    }
    return capped(count * capped(element));
}

uint64_t guess_field(const record_type& type, const field& field, const void* in, unsigned int levels) {
    const unsigned char* member = static_cast<const unsigned char*>(in) + field.offset;
    switch (field.kind) {
        case field_kind::octets:
            return 2 + (load<void*>(member, 0) != nullptr ? load<uint32_t>(in, field.count_offset) : 0);
        case field_kind::nested:
            return guess_record(*field.nested, member, levels);
        case field_kind::optional_nested:
            return guess_pointed(*field.nested, load<const void*>(member, 0), levels);
        case field_kind::slots: {
            uint64_t octets = 2;
            for (uint32_t i = 0; i < field.size; ++i)
                octets += guess_pointed(*field.nested, load<const void*>(member, i * sizeof(void*)), levels);
            return octets;
        }
        default:
            return guess_list(type, field, in, levels);
    }
}

uint64_t guess_record(const record_type& type, const void* in, unsigned int levels) {
    uint64_t octets = type.typical_octets;
    for (const field& field : type)
        if (field.varies) octets += guess_field(type, field, in, levels);
    return octets;
}

}  // namespace

uint64_t guess_octets(const record_type& type, const void* in) { return guess_record(type, in, most_levels); }

}  // namespace zr
