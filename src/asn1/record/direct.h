// The entry points' way from a structure to its octets and back: without an object tree.
#pragma once

#include "asn1/record/decode.h"
#include "asn1/record/encode.h"
#include "asn1/record/tables.h"
#include "asn1/record/tree.h"
#include "asn1/zr_asn_buffer.h"

namespace zr {

constexpr unsigned char envelope_header[] = {4, envelope_version, 0xAC, 0xDC};

template <class S>
constexpr record_codec codec_of = {
    &write_outlined_record<writer, S>,    &write_outlined_record<counter, S>, &read_outlined_record<S>,
    &release_outlined<leave::cleared, S>, &make_object<binding<S>>,
};

template <class S>
constexpr record_type make_record_type() {
    static_assert(sizeof(S) <= max_structure, "a structure of moderate size");
    return {record<S>::name,
            record<S>::binding_name,
            record<S>::module,
            field_table<S>::fields.fields,
            static_cast<uint32_t>(field_table<S>::count),
            sizeof(S),
            static_cast<uint32_t>(min_octets<S>()),
            typical_octets<S>(),
            varying_table<S>::fields.fields,
            static_cast<uint32_t>(count_varying<S>()),
            is_leaf<S>(),
            codec_of<S>};
}

// Gives a copy of an envelope in a malloc block; 275062885 when memory is out, which is reported.
int hand_out_copy(zr_asn_buffer_t& out, const unsigned char* envelope, size_t length);

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
    return record<S>::type.encode(out, &in);
}

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
            copy_fixed<F::size>(&member_at<unsigned char>(to, offset), &member_at<unsigned char>(from, offset));
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
        S made;
        if (open_envelope(in, contents) == 0 && read_record(contents.at, contents.end, made) != nullptr) {
            copy_flat(out, made, std::make_index_sequence<field_count_of<S>>());
            return 0;
        }
    }
    return record<S>::type.decode(in, &out);
}

}  // namespace zr
