// The envelope around a record: the header 04, version, AC, DC, which may be missing in what the program reads.
#pragma once

#include <cstddef>
#include <string>

#include "asn1/envelope.h"
#include "asn1/record/decoding.h"
#include "asn1/record/registry.h"

namespace zr::json {

constexpr unsigned char sequence_identifier = 0x30;

// An encoding holds no more octets than 32 bits can count, its header included.
constexpr size_t envelope_version_at = 1;  // in the header
constexpr size_t most_encoding_octets = UINT32_MAX;

// Octets that are only read, as the library's functions take them; of more than an encoding can have, the first.
inline zr_asn_buffer_t as_buffer(const unsigned char* data, size_t size) {
    return {static_cast<unsigned int>(size < most_encoding_octets ? size : most_encoding_octets),
            const_cast<unsigned char*>(data)};
}

// Whether the octets begin with a header of any version.
inline bool has_header(const unsigned char* data, size_t size) {
    return has_envelope_header(as_buffer(data, size)) && data[0] == envelope_header_octets;
}

// Octets that begin with a record's identifier come without the header; all others are left to the library.
inline bool lacks_header(const unsigned char* data, size_t size) { return size != 0 && data[0] == sequence_identifier; }

// The functions below take the version that the header must have.

// False when the front of an encoding tells that a record's decode refuses it.
inline bool may_be_record(const unsigned char* data, size_t size, unsigned version = envelope_version) {
    return size <= envelope_header_octets || lacks_header(data, size) ||
           (data[envelope_version_at] == version && has_envelope_header(as_buffer(data, size)));
}

// The octets that a record's decode steps over before the record: 0 where the input begins with a SEQUENCE. The first
// octet of an envelope tells.
size_t envelope_header_size(const unsigned char* data, size_t size);

// What is wrong with octets whose envelope a decode refused, and where.
struct envelope_fault {
    size_t offset;
    std::string message;  // "found ..., expected ..."
};
envelope_fault explain_envelope(const unsigned char* data, size_t size, unsigned version = envelope_version);

// decode_octets gives the status of the record's decode, which fills `contents`. Octets without a header are copied
// behind one.
int decode_octets(const record_type& type, const unsigned char* data, size_t size, void* contents,
                  unsigned version = envelope_version);

// The same by zr::decode, whose report is returned. Offsets count the header that was put before.
decode_report decode_report_of(const record_type& type, const unsigned char* data, size_t size, void* contents,
                               const decode_options& options);
decode_report decode_report_of(const record_type& type, const unsigned char* data, size_t size, void* contents,
                               unsigned version = envelope_version, bool strict = false);

}  // namespace zr::json
