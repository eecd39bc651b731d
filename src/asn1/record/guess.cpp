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

uint64_t guess_pointed(const record_type& type, const void* in, unsigned int levels) {
    return in != nullptr ? guess_record(type, in, levels) : 0;
}

// The middle element of a list stands for all.
uint64_t guess_list(const varying_field& varying, const unsigned char* in, unsigned int levels) {
    const field& field = *varying.what;
    const auto* elements = load<const unsigned char*>(in, field.offset);
    const auto count = static_cast<uint32_t>(load_integer(in + field.count_offset, field.count));
    if (elements == nullptr || count == 0) return 0;
    uint64_t element = 4;
    const size_t middle = count / 2;
    if (field.kind == field_kind::list_of_texts) {
        const char* text = load<const char*>(elements, middle * sizeof text);
        if (text != nullptr) element += std::strlen(text);
    } else if (varying.own_list && (count == 1 || levels-- == 0)) {
        // A chain has as many levels as it has: one is as good a guess as another.
        element += field.nested->typical_octets;
    } else if (field.kind == field_kind::list_of_pointers) {
        element += guess_pointed(*field.nested, load<const void*>(elements, middle * sizeof(void*)), levels);
    } else if (field.kind == field_kind::list_of_records) {
        element += guess_record(*field.nested, elements + middle * field.nested->size, levels);
    }
    return capped(count * capped(element));
}

uint64_t guess_field(const varying_field& varying, const unsigned char* in, unsigned int levels) {
    const field& field = *varying.what;
    if (field.kind == field_kind::octets)
        return load<void*>(in, field.offset) != nullptr ? load<uint32_t>(in, field.count_offset) : 0;
    if (field.kind == field_kind::optional_nested)
        return guess_pointed(*field.nested, load<const void*>(in, field.offset), levels);
    if (field.kind != field_kind::slots) return guess_list(varying, in, levels);
    uint64_t octets = 0;
    for (uint32_t i = 0; i < field.size; ++i)
        octets += guess_pointed(*field.nested, load<const void*>(in, field.offset + i * sizeof(void*)), levels);
    return octets;
}

uint64_t guess_record(const record_type& type, const void* in, unsigned int levels) {
    uint64_t octets = type.typical_octets;
    const varying_field* const end = type.varying + type.varying_count;
    for (const varying_field* varying = type.varying; varying != end; ++varying)
        octets += guess_field(*varying, static_cast<const unsigned char*>(in) + varying->offset, levels);
    return octets;
}

}  // namespace

uint64_t guess_octets(const record_type& type, const void* in) { return guess_record(type, in, most_levels); }

}  // namespace zr
