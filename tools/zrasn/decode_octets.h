// The library's decode of one record, with the envelope's header or without.
#pragma once

#include <cstddef>

#include "asn1/record/registry.h"

namespace zr::tool {

// Octets that begin with a record's identifier come without the header; all others are left to the library.
inline bool lacks_header(const unsigned char* data, size_t size) { return size != 0 && data[0] == 0x30; }

// decode_octets gives the status of the record's decode, which fills `contents`. Octets without a header are copied
// behind one.
int decode_octets(const record_type& type, const unsigned char* data, size_t size, void* contents);

}  // namespace zr::tool
