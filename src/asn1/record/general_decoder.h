// Decoding into a structure from octets in any form, driven by the record's table of fields.
#pragma once

#include "asn1/record/field.h"
#include "asn1/record/reader.h"

namespace zr {

// An internal status: the octets are well-formed, but what they say does not fit the structure. The object tree reads
// them once more and reports it.
constexpr int beyond_structure = -2;

// read_any_form reads one SEQUENCE into a structure that is all zero. Returns a status of the object tree or
// beyond_structure. Whatever it returns or throws (zr_asn_memexception), the structure then holds what was read, and
// the record's release function releases it. Records that contain themselves may nest to any depth.
int read_any_form(const record_type& type, input& in, void* out);

}  // namespace zr
