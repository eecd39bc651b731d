// Encoding a structure whose texts are in the local code set.
#include <cstring>

#include "asn1/asnbase/buffer.h"
#include "asn1/codec/encoding.h"
#include "asn1/codec/guess.h"
#include "asn1/codec/local_texts.h"
#include "asn1/codec/local_writer.h"
#include "asn1/codec/record_codec.h"
#include "asn1/codec/walk.h"
#include "asn1/envelope.h"

namespace zr {

unsigned char* write_converted_text(unsigned char* at, const char* text, size_t length, local_writing& shared) {
    const auto converted = shared.conversion.convert(text, length);
    const size_t count = converted.getLength();
    if (count > length) {
        if (count - length > shared.spare) throw local_room_ended();
        shared.spare -= count - length;
    }
    writer sink(at, nullptr);
    sink.string(id_utf8_string, converted.getChars(), count);
    return sink.start();
}

namespace {

// Writes an envelope to the end of `room` octets and gives its start; null when it does not fit.
unsigned char* write_envelope(unsigned char* room, size_t octets, const void* in, const record_codec& codec,
                              text_conversion& conversion) {
    local_writing shared{conversion, text_conversion::keeps_ascii};
    local_writer sink(room + octets, room, shared);
    try {
        sink.go_on(codec.write_local(sink, in));
    } catch (const local_room_ended&) {
        return nullptr;
    }
    return !sink.failed() && write_envelope_header(sink) ? sink.start() : nullptr;
}

bool write_on_stack(const void* in, const record_codec& codec, text_conversion& conversion, encoding_target& target) {
    unsigned char room[stack_octets];
    const unsigned char* const start = write_envelope(room, sizeof room, in, codec, conversion);
    if (start == nullptr) return false;
    target.take(start, static_cast<size_t>(room + sizeof room - start));
    return true;
}

// Overwrites octets at its end.
struct wiping {
    unsigned char* at;
    size_t octets;
    ~wiping() {
        if (at != nullptr) wipe(at, octets);
    }
};

// A secret one lies in a block of exactly its size in the end, and nowhere else.
bool write_in_block(const void* in, const record_codec& codec, text_conversion& conversion, uint64_t most,
                    encoding_target& target) {
    block room = allocate_encoding(most);
    const auto octets = static_cast<size_t>(most);
    const wiping secret{codec.has_secrets ? room.get() : nullptr, octets};
    unsigned char* const start = write_envelope(room.get(), octets, in, codec, conversion);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room.get() + octets - start);
    if (codec.has_secrets) {
        target.take(start, length);
    } else {
        target.take(std::move(room), octets, start, length);
    }
    return true;
}

// What the fields of a record ask for and leave, mostly: a block that is shorter than they ask is too short for them.
constexpr uint64_t asked_and_left = 128;

// Where texts grow, an encoding is taken to grow by a quarter at most; where that is wrong, the block doubles.
void write_local_texts(const record_type& type, const void* in, text_conversion& conversion, encoding_target& target) {
    const record_codec& codec = *type.codec;
    uint64_t likely = 0;
    if (!codec.has_secrets) {
        likely = codec.is_leaf ? 0 : guess_octets(type, in);
        if (likely < stack_octets) {
            if (write_on_stack(in, codec, conversion, target)) return;
            likely = guess_octets_of_chains(type, in);
        }
    }
    if (likely < stack_octets || likely > most_guessed) {
        likely = codec.count(counter(), in) + envelope_header_octets + asked_and_left;
        if (write_in_block(in, codec, conversion, likely, target)) return;
    }
    for (uint64_t octets = likely + likely / 4;; octets *= 2) {
        if (octets > UINT32_MAX && octets / 2 < UINT32_MAX) octets = UINT32_MAX;
        if (write_in_block(in, codec, conversion, octets, target)) return;
    }
}

// Goes through a structure that cannot be encoded, in the order of its fields, and throws for the first text that
// cannot be converted or the first element that is missing.
struct fault_finder {
    using place_in_one = walk_place<const void, const void>;
    text_conversion& conversion;

    bool values(const place_in_one& at) const {
        if (at.field.value != value_kind::text) return true;
        const uint32_t count = place_count(at.field, at.first);
        for (uint32_t i = 0; i < count; ++i) {
            const char* text = text_in(place_at(at.field, at.first, i));
            conversion.convert(text, std::strlen(text));
        }
        return true;
    }
    void begin(const place_in_one& at, uint32_t& count) const { count = place_count(at.field, at.first); }
    bool enter(const place_in_one& at, uint32_t i, const void*& first, const void*&) const {
        first = value_at(at.field, at.first, i);
        if (first == nullptr && at.field.held == holding::pointer_list)
            throw_out_of_memory("ASN: Memory error", at.type.module);
        return true;
    }
    bool end(const place_in_one&) const { return true; }
};

}  // namespace

int record_type::encode_lcs(zr_asn_buffer_t& out, const void* in) const {
    if (!codec->has_texts()) return encode(out, in);
    text_conversion conversion(text_direction::local_to_utf8, codec->has_secrets);
    if (conversion.changes_nothing()) return encode(out, in);
    return guarded([&] {
        handed_out target(out);
        try {
            write_local_texts(*this, in, conversion, target);
        } catch (const zr_asn_exception&) {
            // Writing goes backwards and met the last fault.
            walk_records<const void, const void>(*this, in, nullptr, fault_finder{conversion});
            throw;
        }
        return 0;
    });
}

}  // namespace zr
