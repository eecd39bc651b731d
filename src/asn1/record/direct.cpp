#include "asn1/record/direct.h"

#include <cstdlib>
#include <memory>

namespace zr {

namespace {

// What is small enough for the stack, and for a block that is larger than needed.
constexpr size_t stack_octets = 8192;
constexpr size_t block_octets = 65536;

struct block_deleter {
    void operator()(unsigned char* block) const { std::free(block); }
};
using block = std::unique_ptr<unsigned char, block_deleter>;

block allocate_encoding(uint64_t length) {
    block made(length <= UINT32_MAX ? static_cast<unsigned char*>(std::malloc(static_cast<size_t>(length))) : nullptr);
    if (made == nullptr) throw_out_of_memory("Out of memory in buffer_t::extend");
    return made;
}

int hand_out(zr_asn_buffer_t& out, block encoding, uint64_t length) {
    out.data = encoding.release();
    out.length = static_cast<unsigned int>(length);
    return 0;
}

int copy_out(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    block encoding = allocate_encoding(length);
    std::memcpy(encoding.get(), envelope, length);
    return hand_out(out, std::move(encoding), length);
}

// Writes an envelope to the end of `room` octets and gives its start; null when it does not fit.
unsigned char* write_envelope(unsigned char* room, size_t octets, const void* in, const direct_codec& codec) {
    writer sink(room + octets, room);
    if (!codec.write(sink, in) || !sink.room(sizeof envelope_header)) return nullptr;
    sink.octets(envelope_header, sizeof envelope_header);
    return sink.start();
}

bool encode_on_stack(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    unsigned char room[stack_octets];
    const unsigned char* start = write_envelope(room, sizeof room, in, codec);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room + sizeof room - start);
    copy_out(out, start, length);
    return true;
}

bool encode_in_block(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    block room = allocate_encoding(block_octets);
    const unsigned char* start = write_envelope(room.get(), block_octets, in, codec);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room.get() + block_octets - start);
    std::memmove(room.get(), start, length);
    // A block that cannot be cut stays as it is.
    if (void* cut = std::realloc(room.get(), length)) {
        static_cast<void>(room.release());
        room.reset(static_cast<unsigned char*>(cut));
    }
    hand_out(out, std::move(room), length);
    return true;
}

int encode_counted(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    counter counted;
    codec.count(counted, in);
    const uint64_t length = counted.count() + sizeof envelope_header;
    block encoding = allocate_encoding(length);
    writer sink(encoding.get() + length, nullptr);
    codec.write(sink, in);
    sink.octets(envelope_header, sizeof envelope_header);
    return hand_out(out, std::move(encoding), length);
}

}  // namespace

int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    return guarded([&] { return copy_out(out, envelope, length); });
}

int encode_structure(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    return guarded([&] {
        const uint64_t least = codec.least != nullptr ? codec.least(in, block_octets) : 0;
        if (least < stack_octets && encode_on_stack(out, in, codec)) return 0;
        if (least < block_octets && encode_in_block(out, in, codec)) return 0;
        return encode_counted(out, in, codec);
    });
}

int decode_structure(zr_asn_buffer_t& in, void* out, void* made, const direct_codec& codec) {
    input contents{};
    if (int status = open_envelope(in, contents)) return status;
    const size_t size = codec.type->size;
    std::memset(made, 0, size);
    int status = 0;
    try {
        status = codec.read(contents, made);
    } catch (const zr_asn_exception& exception) {
        codec.release(made);
        std::memset(out, 0, size);
        return report_exception(exception);
    }
    if (status == 0) {
        std::memcpy(out, made, size);
        return 0;
    }
    codec.release(made);
    return status == beyond_structure ? decode_tree(*codec.type, zr_normal, in, out) : status;
}

}  // namespace zr
