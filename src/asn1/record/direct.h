// The entry points' way from a structure to its octets and back: without an object tree.
#pragma once

#include "asn1/record/decode.h"
#include "asn1/record/encode.h"
#include "asn1/record/tree.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

// A record's direct codec on an untyped structure; what all records do with it stands once, in direct.cpp.
struct direct_codec {
    const record_type* type;
    // A quick lower bound of the octets, exact enough up to `enough`; null for a record without lists.
    uint64_t (*least)(const void* in, uint64_t enough);
    bool (*write)(writer& sink, const void* in);
    void (*count)(counter& sink, const void* in);
    int (*read)(input& in, void* out);
    void (*release)(void* structure);
};

template <class S>
constexpr direct_codec codec_of = {
    &record<S>::type,
    is_leaf<S>() ? nullptr
                 : +[](const void* in, uint64_t enough) { return least_octets(*static_cast<const S*>(in), enough); },
    [](writer& sink, const void* in) { return write_record(sink, *static_cast<const S*>(in)); },
    [](counter& sink, const void* in) { write_record(sink, *static_cast<const S*>(in)); },
    [](input& in, void* out) { return read_record(in, *static_cast<S*>(out)); },
    [](void* structure) { release_record(*static_cast<S*>(structure)); },
};

// encode_structure gives the envelope of `in` in one malloc block. Exhausted memory, more than 2^32-1 octets and a null
// element in an array of pointers are reported to standard error and returned as 275062885.
//
// A small record is written once, into the stack, and copied; a larger one once, into a block that is then cut to its
// size; a large one is counted first and written into a block of that size.
ZR_API int encode_structure(zr_asn_buffer_t& out, const void* in, const direct_codec& codec);

constexpr unsigned char envelope_header[] = {4, envelope_version, 0xAC, 0xDC};

// Gives a copy of an envelope in a malloc block; 275062885 when memory is out, which is reported.
ZR_API int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length);

// A structure without blocks is always small.
template <class S>
int encode_structure(zr_asn_buffer_t& out, const S& in) {
    if constexpr (is_flat<S>()) {
        unsigned char room[256];
        writer sink(room + sizeof room, room);
        if (write_record(sink, in) && sink.room(sizeof envelope_header)) {
            sink.octets(envelope_header, sizeof envelope_header);
            return hand_out_copy(out, sink.start(), static_cast<size_t>(room + sizeof room - sink.start()));
        }
    }
    return encode_structure(out, &in, codec_of<S>);
}

// decode_structure fills `out` from an envelope; `made` is room for one more such structure. When the octets are
// refused `out` is as it was; when memory is out, which is reported, it is cleared.
ZR_API int decode_structure(zr_asn_buffer_t& in, void* out, void* made, const direct_codec& codec);

// Places `contents` on the record in an envelope, or returns 275063190 (zr_asnbase::loadObject).
inline int open_envelope(const zr_asn_buffer_t& in, input& contents) {
    const unsigned char* data = in.data;
    if (data == nullptr || in.length <= sizeof envelope_header ||
        std::memcmp(data + 1, envelope_header + 1, sizeof envelope_header - 1) != 0)
        return zr_err_bad_envelope;
    const unsigned int skip = data[0];
    if (skip == 0 || skip > in.length) return zr_err_bad_envelope;
    contents = {data + skip, data + in.length};
    return 0;
}

// Copies the fields of a structure without blocks one by one: a copy as a whole would wait for the stores of its parts.
template <class S, size_t... I>
ZR_INLINE void copy_flat(S& to, const S& from, std::index_sequence<I...>) {
    const auto copy = [&](auto index) {
        using F = field_type<S, decltype(index)::value>;
        using T = typename F::value_type;
        constexpr size_t offset = field_offset<S, decltype(index)::value>;
        if constexpr (F::kind == field_kind::nested) {
            copy_flat(member_at<T>(to, offset), member_at<T>(from, offset),
                      std::make_index_sequence<field_count_of<T>>());
        } else if constexpr (F::kind == field_kind::fixed_octets) {
            std::memcpy(&member_at<unsigned char>(to, offset), &member_at<unsigned char>(from, offset), F::size);
        } else {
            member_at<T>(to, offset) = member_at<T>(from, offset);
        }
    };
    (copy(std::integral_constant<size_t, I>()), ...);
}

// A structure without blocks needs neither memory nor release.
template <class S>
int decode_structure(zr_asn_buffer_t& in, S& out) {
    if constexpr (is_flat<S>()) {
        input contents{};
        if (int status = open_envelope(in, contents)) return status;
        S made;
        if (int status = read_record(contents, made)) return status;
        copy_flat(out, made, std::make_index_sequence<field_count_of<S>>());
        return 0;
    } else {
        alignas(S) unsigned char made[sizeof(S)];
        return decode_structure(in, &out, made, codec_of<S>);
    }
}

}  // namespace zr
