#include "asn1/record/direct.h"

#include <cstdlib>
#include <memory>

namespace zr {

namespace {

constexpr size_t scratch_octets = 32768;
constexpr unsigned char header[] = {4, envelope_version, 0xAC, 0xDC};

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

// False when the record does not fit.
bool encode_small(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    unsigned char scratch[scratch_octets];
    writer sink(scratch + scratch_octets, scratch);
    if (!codec.write(sink, in) || !sink.room(sizeof header)) return false;
    sink.octets(header, sizeof header);
    const uint64_t length = sink.since(scratch + scratch_octets);
    block encoding = allocate_encoding(length);
    std::memcpy(encoding.get(), sink.start(), static_cast<size_t>(length));
    hand_out(out, std::move(encoding), length);
    return true;
}

int encode_large(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    counter counted;
    codec.count(counted, in);
    const uint64_t length = counted.count() + sizeof header;
    block encoding = allocate_encoding(length);
    writer sink(encoding.get() + length, nullptr);
    codec.write(sink, in);
    sink.octets(header, sizeof header);
    return hand_out(out, std::move(encoding), length);
}

}  // namespace

int encode_structure(zr_asn_buffer_t& out, const void* in, const direct_codec& codec) {
    return guarded([&] {
        if ((codec.least == nullptr || codec.least(in) <= scratch_octets) && encode_small(out, in, codec)) return 0;
        return encode_large(out, in, codec);
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
