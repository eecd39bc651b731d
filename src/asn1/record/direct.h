// The entry points' way from a structure to its octets and back: without an object tree.
#pragma once

#include "asn1/record/decode.h"
#include "asn1/record/encode.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

// A record's direct codec on an untyped structure; what all records do with it stands once, in direct.cpp.
struct direct_codec {
    const record_type* type;
    uint64_t (*least)(const void* in);
    bool (*write)(writer& sink, const void* in);
    void (*count)(counter& sink, const void* in);
    int (*read)(input& in, void* out);
    void (*release)(void* structure);
};

template <class S>
constexpr direct_codec codec_of = {
    &record<S>::type,
    [](const void* in) {
        return least_octets(*static_cast<const S*>(in), std::make_index_sequence<field_count_of<S>>());
    },
    [](writer& sink, const void* in) { return write_record(sink, *static_cast<const S*>(in)); },
    [](counter& sink, const void* in) { write_record(sink, *static_cast<const S*>(in)); },
    [](input& in, void* out) { return read_record(in, *static_cast<S*>(out)); },
    [](void* structure) { release_record(*static_cast<S*>(structure)); },
};

// encode_structure gives the envelope of `in` in one malloc block. Exhausted memory, more than 2^32-1 octets and a null
// element in an array of pointers are reported to standard error and returned as 275062885.
//
// A small record is written once, into the stack, and copied; a large one is counted first and written in place.
ZR_API int encode_structure(zr_asn_buffer_t& out, const void* in, const direct_codec& codec);

// decode_structure fills `out` from an envelope; `made` is room for one more such structure. When the octets are
// refused `out` is as it was; when memory is out, which is reported, it is cleared.
ZR_API int decode_structure(zr_asn_buffer_t& in, void* out, void* made, const direct_codec& codec);

}  // namespace zr
