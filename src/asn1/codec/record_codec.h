// What the direct codec knows of a record at run time.
#pragma once

#include <cstdint>

#include "asn1/record/record_type.h"

namespace zr {

class writer;
class local_writer;
class counter;
class packed_blocks;
struct strict_blocks;
struct local_blocks;

// A field whose encodings differ much in length, in a record or in what it embeds: texts are taken to be short.
struct varying_field {
    const field* what;
    uint32_t offset;  // of the structure with the field
    bool own_list;    // a list of just that record
};

struct record_codec {
    // The record's one function for each thing, on an untyped structure (asn1/codec/encode.h, decode.h, release.h).
    unsigned char* (*write)(writer sink, const void* in);
    uint64_t (*count)(counter sink, const void* in);
    // With texts in the local code set; null for a record without texts.
    unsigned char* (*write_local)(local_writer sink, const void* in);
    const unsigned char* (*read)(const unsigned char* at, const unsigned char* end, void* out);
    const unsigned char* (*read_packed)(const unsigned char* at, const unsigned char* end, void* out,
                                        packed_blocks* blocks);
    const unsigned char* (*read_strictly)(const unsigned char* at, const unsigned char* end, void* out,
                                          strict_blocks blocks);
    // As write_local.
    const unsigned char* (*read_local)(const unsigned char* at, const unsigned char* end, void* out,
                                       local_blocks blocks);
    void (*release)(void* structure);
    // How many levels follow, up to `most`, where each list of the record in itself has one element
    // (asn1/codec/encode.h); null for a record that does not contain itself.
    size_t (*count_chain)(const void* in, size_t most);

    uint32_t min_octets;      // the fewest that any encoding has
    uint32_t typical_octets;  // about as many take the fields that do not vary
    const varying_field* varying;
    uint32_t varying_count;
    bool has_secrets;  // in what it embeds too: no octet of them stays in a block or on the stack
    bool is_leaf;      // without lists, slots and optional records

    bool has_texts() const { return write_local != nullptr; }
};

// Gives a copy of an envelope in a malloc block; 275062885 when memory is out, which is reported.
[[nodiscard]] ZR_CODEC_API int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length);

}  // namespace zr
