#include "asn1/record/direct.h"

#include <cstddef>
#include <cstdlib>
#include <memory>

#include "asn1/record/general_decoder.h"
#include "asn1/record/guess.h"

namespace zr {

namespace {

// What is small enough for the stack, and for a block of a guessed size.
constexpr size_t stack_octets = 8192;
constexpr size_t most_guessed = 65536;

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
unsigned char* write_envelope(unsigned char* room, size_t octets, const void* in, const record_codec& codec) {
    writer sink(room + octets, room);
    sink.go_on(codec.write(sink, in));
    if (sink.failed() || !sink.room(sizeof envelope_header)) return nullptr;
    sink.octets(envelope_header, sizeof envelope_header);
    return sink.start();
}

bool encode_on_stack(zr_asn_buffer_t& out, const void* in, const record_codec& codec) {
    unsigned char room[stack_octets];
    const unsigned char* start = write_envelope(room, sizeof room, in, codec);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room + sizeof room - start);
    copy_out(out, start, length);
    return true;
}

// Writes into a block that is a quarter longer than the guess.
bool encode_in_block(zr_asn_buffer_t& out, const void* in, const record_codec& codec, size_t likely) {
    const size_t octets = likely + likely / 4;
    block room = allocate_encoding(octets);
    const unsigned char* start = write_envelope(room.get(), octets, in, codec);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room.get() + octets - start);
    std::memmove(room.get(), start, length);
    // What is too long by far is cut; a block that cannot be cut stays as it is.
    if (octets - length > length / 2) {
        if (void* cut = std::realloc(room.get(), length)) {
            static_cast<void>(room.release());
            room.reset(static_cast<unsigned char*>(cut));
        }
    }
    hand_out(out, std::move(room), length);
    return true;
}

int encode_counted(zr_asn_buffer_t& out, const void* in, const record_codec& codec) {
    const uint64_t length = codec.count(counter(), in) + sizeof envelope_header;
    block encoding = allocate_encoding(length);
    writer sink(encoding.get() + length, nullptr);
    sink.go_on(codec.write(sink, in));
    sink.octets(envelope_header, sizeof envelope_header);
    return hand_out(out, std::move(encoding), length);
}

}  // namespace

int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    return guarded([&] { return copy_out(out, envelope, length); });
}

namespace {

// Reads a record into a structure that is cleared first: the short way, and the general one if that does not do.
int read_structure(const record_type& type, input contents, void* made) {
    std::memset(made, 0, type.size);
    if (type.codec.read(contents.at, contents.end, made) != nullptr) return 0;
    type.codec.release(made);
    std::memset(made, 0, type.size);
    return read_any_form(type, contents, made);
}

}  // namespace

int record_type::encode(zr_asn_buffer_t& out, const void* in) const {
    return guarded([&] {
        const uint64_t likely = is_leaf ? 0 : guess_octets(*this, in);
        if (likely < stack_octets) {
            if (encode_on_stack(out, in, codec)) return 0;
        } else if (likely <= most_guessed) {
            if (encode_in_block(out, in, codec, static_cast<size_t>(likely))) return 0;
        }
        return encode_counted(out, in, codec);
    });
}

int record_type::decode(zr_asn_buffer_t& in, void* out) const {
    input contents{};
    if (int status = open_envelope(in, contents)) return status;
    alignas(std::max_align_t) unsigned char made[max_structure];
    int status = 0;
    try {
        status = read_structure(*this, contents, made);
    } catch (const zr_asn_exception& exception) {
        status = report_exception(exception);
    }
    if (status == 0) {
        std::memcpy(out, made, size);
        return 0;
    }
    codec.release(made);
    if (status == beyond_structure) return decode_tree(*this, zr_normal, in, out);
    if (clears_structure(status)) std::memset(out, 0, size);
    return status;
}

int record_type::encode_lcs(zr_asn_buffer_t& out, void* in) const {
    return encode_tree(*this, zr_local_code_set, out, in);
}

int record_type::decode_lcs(zr_asn_buffer_t& in, void* out) const {
    return decode_tree(*this, zr_local_code_set, in, out);
}

}  // namespace zr
