// The entry points of a record on untyped structures, for texts in UTF-8.
#include "asn1/codec/entry_points.h"

#include <cstring>

#include "asn1/codec/encoding.h"
#include "asn1/codec/unfinished.h"
#include "asn1/codec/writer.h"
#include "asn1/envelope.h"

namespace zr {

int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    return guarded([&] {
        hand_out_copied(out, envelope, length);
        return 0;
    });
}

int encode_integer(zr_asn_buffer_t& out, int32_t value, int version) {
    unsigned char room[envelope_header_octets + max_integer];
    writer sink(room + sizeof room, room);
    sink.integer(value);
    write_envelope_header(sink, version);
    handed_out(out).take(sink.start(), static_cast<size_t>(room + sizeof room - sink.start()));
    return 0;
}

int decode_integer(const zr_asn_buffer_t& in, int32_t& value, int version) {
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, version, contents)) return status;
    input octets{contents, in.data + in.length};
    return read_fitting_integer(octets, value);
}

int encode_record(const record_type& type, zr_asn_buffer_t& out, const void* in, int version) {
    handed_out target(out);
    write_encoding(type, in, version, target);
    return 0;
}

int decode_record(const record_type& type, const zr_asn_buffer_t& in, void* out, int version) {
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, version, contents)) return status;
    unfinished made(type);
    const int status = made.read(contents, in.data + in.length);
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

void record_type::free(void* structure) const { codec->release(structure); }

int record_type::examine(const unsigned char* octets, size_t length, refusal& found) const {
    found.clear();
    found.status = zr_err_out_of_memory;
    return guarded([&] {
        unfinished read(*this);
        general_reading any;
        any.found = &found;
        found.status = read_any_form(*this, {octets, octets + length}, read.get(), any);
        if (found.status == 0 && any.uncounted.module != nullptr) found.status = zr_err_out_of_memory;
        return found.status;
    });
}

}  // namespace zr
