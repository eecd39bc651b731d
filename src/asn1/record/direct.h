// The entry points' way from a structure to its octets and back: without an object tree.
#pragma once

#include "asn1/record/decode.h"
#include "asn1/record/encode.h"
#include "asn1/record/tree.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

// Places `contents` on the record in an envelope, or returns 275063190 (zr_asnbase::loadObject).
int open_envelope(const zr_asn_buffer_t& in, input& contents);

// decode_direct fills `out` from an envelope. When the octets are refused `out` is as it was; when memory is out it is
// cleared. beyond_structure tells that the object tree must read them.
template <class S>
int decode_direct(zr_asn_buffer_t& in, S& out) {
    input contents{};
    if (int status = open_envelope(in, contents)) return status;
    S made;
    std::memset(static_cast<void*>(&made), 0, sizeof made);
    int status = 0;
    try {
        status = read_record(contents, made);
    } catch (...) {
        release_record(made);
        std::memset(static_cast<void*>(&out), 0, sizeof out);
        throw;
    }
    if (status == 0) {
        std::memcpy(static_cast<void*>(&out), &made, sizeof out);
    } else {
        release_record(made);
    }
    return status;
}

// The bodies of the plain entry points.
template <class S>
int encode_structure(zr_asn_buffer_t& out, const S& in) {
    return guarded([&] { return encode_direct(out, in, envelope_version); });
}
template <class S>
int decode_structure(zr_asn_buffer_t& in, S& out) {
    const int status = guarded([&] { return decode_direct(in, out); });
    return status == beyond_structure ? decode_tree(record<S>::type, zr_normal, in, &out) : status;
}

}  // namespace zr
