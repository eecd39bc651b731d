// A record at run time: its name, its table of fields, and its entry points on untyped structures.
#pragma once

#include "asn1/envelope.h"
#include "asn1/record/field.h"
#include "asn1/record/refusal.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

// How the direct codec works with a record: not for callers (asn1/codec/record_codec.h).
struct record_codec;
class packed_blocks;
struct decode_options;
struct decode_report;

// One record of the registry.
struct record_type {
    const char* name;           // of the structure, such as "attrlist_s_t"
    const char* binding;        // of the binding class, such as "asn_attrlist_t"
    const char* module;         // of the schema module, such as "attrlist_asn"
    const field* fields;        // in the order of their encodings
    uint32_t field_count;       // at least one
    uint32_t size;              // of the structure in octets
    object_maker make_binding;  // makes an object of the binding class
    const record_codec* codec;  // not for callers

    const field* begin() const { return fields; }
    const field* end() const { return fields + field_count; }
    // Whether the last field is a list of this record itself: then it nests as deep as the data does.
    bool contains_itself() const {
        const field& last = fields[field_count - 1];
        return last.record == this && is_list(last.held);
    }

    // The record's entry points (see ZR_RECORD in asn1/record/record.h); the plain ones write and accept any version,
    // of which the low eight bits count.
    [[nodiscard]] ZR_API int encode(zr_asn_buffer_t& out, const void* in, int version = envelope_version) const;
    [[nodiscard]] ZR_API int encode_lcs(zr_asn_buffer_t& out, const void* in) const;
    [[nodiscard]] ZR_API int decode(const zr_asn_buffer_t& in, void* out, int version = envelope_version) const;
    // Octets from outside (see zr::decode in zrasn/decode.h).
    [[nodiscard]] ZR_API int decode(const void* octets, size_t length, void* out, const decode_options& options,
                                    decode_report& report) const;
    // The same into blocks of which nothing is released by itself (see zr::packed in zrasn/decode.h). What was there is
    // gone; after a failure `out` is zero.
    [[nodiscard]] ZR_API int decode_packed(const void* octets, size_t length, void* out, packed_blocks& blocks,
                                           const decode_options& options, decode_report& report) const;
    // decode_lcs is the form for the local code set.
    [[nodiscard]] ZR_API int decode_lcs(const zr_asn_buffer_t& in, void* out) const;
    // What zrAsnFreeObj does.
    ZR_API void free(void* structure) const;

    // examine reads `length` octets, an encoding without its envelope, as decode does and gives away what it reads.
    // Returns the status that decode answers; when that is not 0, `found` says where and why. Octets behind the record
    // are not looked at. Nothing is printed.
    [[nodiscard]] ZR_API int examine(const unsigned char* octets, size_t length, refusal& found) const;
};

}  // namespace zr
