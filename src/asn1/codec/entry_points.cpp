// The entry points of a record on untyped structures: where an encoding is written, and what becomes of a structure.
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "asn1/codec/entry_points.h"
#include "asn1/codec/general_reader.h"
#include "asn1/codec/guess.h"
#include "asn1/codec/record_codec.h"
#include "asn1/codec/writer.h"
#include "asn1/record/tree.h"

namespace zr {

namespace {

// What is small enough for the stack: of a thread's 64 KiB little is left to its caller otherwise.
constexpr size_t stack_octets = 8192;
// Up to there the block is a guess longer than its contents; what is above is worth counting first.
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
unsigned char* write_envelope(unsigned char* room, size_t octets, const void* in, const record_codec& codec,
                              int version) {
    writer sink(room + octets, room);
    sink.go_on(codec.write(sink, in));
    return !sink.failed() && write_envelope_header(sink, version) ? sink.start() : nullptr;
}

bool encode_on_stack(zr_asn_buffer_t& out, const void* in, const record_codec& codec, int version) {
    unsigned char room[stack_octets];
    const unsigned char* start = write_envelope(room, sizeof room, in, codec, version);
    if (start == nullptr) return false;
    const auto length = static_cast<size_t>(room + sizeof room - start);
    copy_out(out, start, length);
    return true;
}

// Writes into a block that is a quarter longer than the guess.
bool encode_in_block(zr_asn_buffer_t& out, const void* in, const record_codec& codec, size_t likely, int version) {
    const size_t octets = likely + likely / 4;
    block room = allocate_encoding(octets);
    const unsigned char* start = write_envelope(room.get(), octets, in, codec, version);
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

int encode_counted(zr_asn_buffer_t& out, const void* in, const record_codec& codec, int version) {
    const uint64_t length = codec.count(counter(), in) + envelope_header_octets;
    block encoding = allocate_encoding(length);
    writer sink(encoding.get() + length, nullptr);
    sink.go_on(codec.write(sink, in));
    write_envelope_header(sink, version);
    return hand_out(out, std::move(encoding), length);
}

// A structure that is being decoded. What it holds when it goes is released.
class unfinished {
public:
    explicit unfinished(const record_type& type) : type_(type) { std::memset(made_, 0, type.size); }
    unfinished(const unfinished&) = delete;
    unfinished& operator=(const unfinished&) = delete;
    ~unfinished() {
        if (!handed_on_) type_.codec->release(made_);
    }

    // Reads a record: the quick way, and the general one if that does not do.
    int read(const unsigned char* at, const unsigned char* end) {
        if (type_.codec->read(at, end, made_) != nullptr) return 0;
        type_.codec->release(made_);
        std::memset(made_, 0, type_.size);
        return read_any_form(type_, {at, end}, made_, nullptr);
    }
    void* get() { return made_; }
    void hand_on(void* out) {
        std::memcpy(out, made_, type_.size);
        handed_on_ = true;
    }

private:
    const record_type& type_;
    alignas(std::max_align_t) unsigned char made_[max_structure];
    bool handed_on_ = false;
};

}  // namespace

int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    return guarded([&] { return copy_out(out, envelope, length); });
}

int encode_integer(zr_asn_buffer_t& out, int32_t value, int version) {
    unsigned char room[envelope_header_octets + max_integer];
    writer sink(room + sizeof room, room);
    sink.integer(value);
    write_envelope_header(sink, version);
    return copy_out(out, sink.start(), static_cast<size_t>(room + sizeof room - sink.start()));
}

int decode_integer(const zr_asn_buffer_t& in, int32_t& value, int version) {
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, version, contents)) return status;
    input octets{contents, in.data + in.length};
    return read_fitting_integer(octets, value);
}

int encode_record(const record_type& type, zr_asn_buffer_t& out, const void* in, int version) {
    const record_codec& codec = *type.codec;
    const uint64_t likely = codec.is_leaf ? 0 : guess_octets(type, in);
    if (likely < stack_octets) {
        if (encode_on_stack(out, in, codec, version)) return 0;
    } else if (likely <= most_guessed) {
        if (encode_in_block(out, in, codec, static_cast<size_t>(likely), version)) return 0;
    }
    return encode_counted(out, in, codec, version);
}

int decode_record(const record_type& type, const zr_asn_buffer_t& in, void* out, int version) {
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, version, contents)) return status;
    unfinished made(type);
    const int status = made.read(contents, in.data + in.length);
    if (status == zr_err_out_of_memory) throw_memory_error(type.module);
    if (status == 0) made.hand_on(out);
    return status;
}

int record_type::encode(zr_asn_buffer_t& out, const void* in, int version) const {
    return guarded([&] { return encode_record(*this, out, in, version); });
}

int record_type::decode(const zr_asn_buffer_t& in, void* out, int version) const {
    const int status = guarded([&] { return decode_record(*this, in, out, version); });
    if (clears_structure(status)) std::memset(out, 0, size);
    return status;
}

int record_type::encode_lcs(zr_asn_buffer_t& out, const void* in) const {
    return encode_tree(*this, zr_local_code_set, out, in);
}

int record_type::decode_lcs(const zr_asn_buffer_t& in, void* out) const {
    return decode_tree(*this, zr_local_code_set, in, out);
}

void record_type::free(void* structure) const { codec->release(structure); }

int record_type::examine(const unsigned char* octets, size_t length, refusal& found) const {
    found = {};
    found.status = zr_err_out_of_memory;
    return guarded([&] {
        unfinished read(*this);
        return found.status = read_any_form(*this, {octets, octets + length}, read.get(), &found);
    });
}

}  // namespace zr
