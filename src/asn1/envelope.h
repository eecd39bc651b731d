// The envelope around every public encoding: the header 04, version, AC, DC and the complete BER encoding of one
// object. The first octet says how many octets the header has, so that a longer one can be stepped over.
#pragma once

#include <cstddef>

#include "asn1/status.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

// The header that the library writes.
constexpr size_t envelope_header_octets = 4;
// The version that the entry points write and accept.
constexpr unsigned char envelope_version = 2;

// put_envelope_header stores the header at `to`; of `version` the low eight bits count.
inline void put_envelope_header(unsigned char* to, int version = envelope_version) {
    to[0] = envelope_header_octets;
    to[1] = static_cast<unsigned char>(version);
    to[2] = 0xAC;
    to[3] = 0xDC;
}

// has_envelope_header answers whether the octets begin with a header of any version and more octets follow.
inline bool has_envelope_header(const zr_asn_buffer_t& in) {
    return in.data != nullptr && in.length > envelope_header_octets && in.data[2] == 0xAC && in.data[3] == 0xDC;
}

// open_envelope gives where the encoding in an envelope of the version begins, or returns 275063190: no such header, or
// one that declares no octets or more than there are.
inline int open_envelope(const zr_asn_buffer_t& in, int version, const unsigned char*& contents) {
    if (!has_envelope_header(in) || in.data[1] != static_cast<unsigned char>(version)) return zr_err_bad_envelope;
    const unsigned int skip = in.data[0];
    if (skip == 0 || skip > in.length) return zr_err_bad_envelope;
    contents = in.data + skip;
    return 0;
}

}  // namespace zr
