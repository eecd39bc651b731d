#include "asn1/codec/encoding.h"

#include <cstring>

#include "asn1/codec/guess.h"
#include "asn1/codec/record_codec.h"
#include "asn1/codec/writer.h"

namespace zr {

namespace {

// A block that is longer than its contents by more than a fiftieth, and by more than this, is cut.
constexpr size_t most_left_over = 256;

// Writes an envelope to the end of `room` octets and gives its start; null when it does not fit.
unsigned char* write_envelope(unsigned char* room, size_t octets, const void* in, const record_codec& codec,
                              int version) {
    writer sink(room + octets, room);
    sink.go_on(codec.write(sink, in));
    return !sink.failed() && write_envelope_header(sink, version) ? sink.start() : nullptr;
}

bool write_on_stack(const void* in, const record_codec& codec, int version, encoding_target& target) {
    unsigned char room[stack_octets];
    const unsigned char* start = write_envelope(room, sizeof room, in, codec, version);
    if (start == nullptr) return false;
    target.take(start, static_cast<size_t>(room + sizeof room - start));
    return true;
}

// Writes into a block that is a quarter longer than the guess.
bool write_in_block(const void* in, const record_codec& codec, int version, size_t likely, encoding_target& target) {
    const size_t octets = likely + likely / 4;
    block room = allocate_encoding(octets);
    unsigned char* start = write_envelope(room.get(), octets, in, codec, version);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room.get() + octets - start);
    target.take(std::move(room), octets, start, length);
    return true;
}

void write_counted(const void* in, const record_codec& codec, int version, encoding_target& target) {
    const uint64_t length = codec.count(counter(), in) + envelope_header_octets;
    block room = allocate_encoding(length);
    unsigned char* const start = room.get();
    writer sink(start + length, nullptr);
    sink.go_on(codec.write(sink, in));
    write_envelope_header(sink, version);
    target.take(std::move(room), static_cast<size_t>(length), start, static_cast<size_t>(length));
}

void hand_out(zr_asn_buffer_t& out, block encoding, size_t length) {
    out.data = encoding.release();
    out.length = static_cast<unsigned int>(length);
}

}  // namespace

block allocate_encoding(uint64_t length) {
    block made(length <= UINT32_MAX ? static_cast<unsigned char*>(std::malloc(static_cast<size_t>(length))) : nullptr);
    if (made == nullptr) throw_out_of_memory("Out of memory in buffer_t::extend");
    return made;
}

void write_encoding(const record_type& type, const void* in, int version, encoding_target& target) {
    const record_codec& codec = *type.codec;
    if (codec.has_secrets) return write_counted(in, codec, version, target);
    uint64_t likely = codec.is_leaf ? 0 : guess_octets(type, in);
    if (likely < stack_octets) {
        if (write_on_stack(in, codec, version, target)) return;
        likely = guess_octets_of_chains(type, in);
    }
    if (likely >= stack_octets && likely <= most_guessed) {
        if (write_in_block(in, codec, version, static_cast<size_t>(likely), target)) return;
    }
    write_counted(in, codec, version, target);
}

void hand_out_copied(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    block copy = allocate_encoding(length);
    std::memcpy(copy.get(), envelope, length);
    hand_out(out, std::move(copy), length);
}

void handed_out::take(const unsigned char* envelope, size_t length) { hand_out_copied(out_, envelope, length); }

// A block that cannot be cut stays as it is.
void handed_out::take(block owner, size_t room, unsigned char* envelope, size_t length) {
    if (envelope != owner.get()) std::memmove(owner.get(), envelope, length);
    if (room - length > most_left_over && room - length > length / 50) {
        if (void* cut = std::realloc(owner.get(), length)) {
            static_cast<void>(owner.release());
            owner.reset(static_cast<unsigned char*>(cut));
        }
    }
    hand_out(out_, std::move(owner), length);
}

}  // namespace zr
