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

uint64_t guess_element(const record_type& type, const field& field, const unsigned char* elements, size_t index,
                       unsigned int levels) {
    if (field.kind == field_kind::list_of_texts) {
        const char* text = load<const char*>(elements, index * sizeof text);
        return text != nullptr ? std::strlen(text) : 0;
    }
    if (field.nested == &type && levels-- == 0) return 0;
    if (field.kind == field_kind::list_of_pointers)
        return guess_pointed(*field.nested, load<const void*>(elements, index * sizeof(void*)), levels);
    if (field.kind == field_kind::list_of_records)
        return guess_record(*field.nested, elements + index * field.nested->size, levels);
    return 0;
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
        default: {
            const auto* elements = load<const unsigned char*>(member, 0);
            if (elements == nullptr) return 2;
            const auto count = static_cast<uint32_t>(
                load_integer(static_cast<const unsigned char*>(in) + field.count_offset, field.count));
            if (count == 0) return 2;
            return capped(count * capped(4 + guess_element(type, field, elements, count / 2, levels)));
        }
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
