// The entry points of a record on untyped structures, for texts in UTF-8.
#include <cstring>

#include "asn1/codec/encoding.h"
#include "asn1/codec/unfinished.h"
#include "asn1/envelope.h"

namespace zr {

int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length) {
    return guarded([&] {
        handed_out(out).take(envelope, length);
        return 0;
    });
}

int record_type::encode(zr_asn_buffer_t& out, const void* in) const {
    return guarded([&] {
        handed_out target(out);
        write_encoding(*this, in, envelope_version, target);
        return 0;
    });
}

int record_type::decode(const zr_asn_buffer_t& in, void* out) const {
    const unsigned char* contents = nullptr;
    if (int status = open_envelope(in, envelope_version, contents)) return status;
    const int status = guarded([&] {
        unfinished made(*this);
        const int read = made.read(contents, in.data + in.length);
        if (read == zr_err_out_of_memory) throw_memory_error(module);
        if (read == 0) made.hand_on(out);
        return read;
    });
    if (clears_structure(status)) std::memset(out, 0, size);
    return status;
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
