// Moving a structure into and out of the object tree of its binding, driven by the record's table of fields.
#pragma once

#include "asn1/record/record_type.h"
#include "asn1/zrasnbase.h"

namespace zr {

// A structure that is decoded lies on the stack until all of it is there.
constexpr size_t max_structure = 1024;

// make_objects makes the value objects of a binding's fields in `room`, registered in the list's order;
// when one cannot be made none is left. destroy_objects destroys them.
ZR_API void make_objects(zr_asnbase& binding, const record_type& type, unsigned char* room);
ZR_API void destroy_objects(const record_type& type, unsigned char* room);

// set_fields copies a structure into the value objects of its binding, get_fields copies them into a structure, which
// it clears first. Both throw zr_asn_memexception, set_fields also when the structure nests deeper than the tree
// follows. What get_fields has filled when it throws, the record's free releases: what a count does not cover is gone.
ZR_API void set_fields(zr_asnbase& binding, const record_type& type, const void* structure);
ZR_API void get_fields(zr_asnbase& binding, const record_type& type, void* structure);

// encode_fields gives the envelope of a structure by way of its binding, decode_fields fills a structure from one.
// Exceptions are reported to standard error and returned as a status.
[[nodiscard]] ZR_API int encode_fields(zr_asnbase& binding, const record_type& type, const void* in,
                                       zr_asn_buffer_t& out, int version);
[[nodiscard]] ZR_API int decode_fields(zr_asnbase& binding, const record_type& type, void* out,
                                       const zr_asn_buffer_t& in, int version);

// encode_tree and decode_tree are the entry points' way through a binding object, which is made for the one call (mode
// zr_local_code_set converts the texts). Exceptions are reported to standard error and returned as a status. The
// structure of a failed decode is as the entry points promise (clears_structure in asn1/status.h).
[[nodiscard]] int encode_tree(const record_type& type, security_t mode, zr_asn_buffer_t& out, const void* in);
[[nodiscard]] int decode_tree(const record_type& type, security_t mode, const zr_asn_buffer_t& in, void* out);

}  // namespace zr
