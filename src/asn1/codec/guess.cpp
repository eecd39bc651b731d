#include "asn1/codec/guess.h"

#include "asn1/codec/record_codec.h"
#include "asn1/codec/values.h"
#include "asn1/record/members.h"

namespace zr {

namespace {

// How deep lists of a record in itself are followed: four levels tell a wide tree from a narrow one, and a guess visits
// few structures.
constexpr unsigned int most_levels = 4;

// Guesses stop to grow there, so that products do not overflow.
constexpr uint64_t most_octets = 1 << 20;
uint64_t capped(uint64_t octets) { return octets < most_octets ? octets : most_octets; }

uint64_t guess_record(const record_type& type, const void* in, unsigned int levels);

// What one value of a list or of slots takes.
uint64_t guess_value(const field& field, const void* in, const void* value, unsigned int levels) {
    if (value == nullptr) return 0;
    if (field.value == value_kind::record) return 4 + guess_record(*field.record, value, levels);
    return guess_value_octets(field, in, value);
}

// The middle element of a list stands for all.
uint64_t guess_list(const varying_field& varying, const void* in, unsigned int levels) {
    const field& field = *varying.what;
    const uint32_t count = place_count(field, in);
    if (count == 0) return 0;
    // A chain has as many levels as it has: one is as good a guess as another.
    if (varying.own_list && (count == 1 || levels-- == 0))
        return capped(count * uint64_t{4 + field.record->codec->typical_octets});
    return capped(count * capped(guess_value(field, in, value_at(field, in, count / 2), levels)));
}

uint64_t guess_field(const varying_field& varying, const void* in, unsigned int levels) {
    const field& field = *varying.what;
    uint64_t octets = 0;
    switch (field.held) {
        case holding::one:
            return guess_value_octets(field, in, value_at(field, in));
        case holding::optional:
        case holding::slots:
            for (uint32_t i = 0; i < place_count(field, in); ++i)
                octets += guess_value(field, in, value_at(field, in, i), levels);
            return octets;
        case holding::list:
        case holding::pointer_list:
            return guess_list(varying, in, levels);
    }
    return octets;
}

uint64_t guess_record(const record_type& type, const void* in, unsigned int levels) {
    uint64_t octets = type.codec->typical_octets;
    const varying_field* const end = type.codec->varying + type.codec->varying_count;
    for (const varying_field* varying = type.codec->varying; varying != end; ++varying)
        octets += guess_field(*varying, &place<char>(in, varying->offset), levels);
    return octets;
}

}  // namespace

uint64_t guess_octets(const record_type& type, const void* in) { return guess_record(type, in, most_levels); }

uint64_t guess_octets_of_chains(const record_type& type, const void* in) {
    uint64_t octets = guess_octets(type, in);
    const varying_field* const end = type.codec->varying + type.codec->varying_count;
    for (const varying_field* varying = type.codec->varying; varying != end; ++varying) {
        const field& list = *varying->what;
        const void* const holder = &place<char>(in, varying->offset);
        if (!varying->own_list || place_count(list, holder) != 1) continue;
        const void* const first = value_at(list, holder, 0);
        if (first == nullptr) continue;
        // All levels are taken to be like the first. Of a list with one element the guess above has this much:
        const uint64_t guessed = 4 + list.record->codec->typical_octets;
        const uint64_t level = 4 + guess_record(*list.record, first, 0) - (place_count(list, first) == 1 ? guessed : 0);
        octets +=
            capped(level * (1 + list.record->codec->count_chain(first, static_cast<size_t>(most_octets / level)))) -
            guessed;
    }
    return octets;
}

}  // namespace zr
