// For the source of a schema module, and only for it: makes the records that its header describes.
//
// The codec behind a record works with these words:
//
//   value     what one element of a field is: an integer, a text, a record and so on
//   place     where a value lies: in the member itself, or in an entry of an array; for values that are held by
//             pointer the place is the pointer
//   leaf      a record, or a field, without lists, slots and optional records, in what it embeds neither
//   flat      a record without blocks of its own
//   run       leaf fields that stand next to each other and are written after one look at the room
//   quick     reading the form that the library itself writes, with single values in other forms; anything else is left
//             to the general reader
//   strict    quick, and taking nothing but what an encode gives back
//   local     quick, or writing, with texts in the local code set
//   general   reading any form of BER that the object tree reads, with its statuses
//   level     a record that has been entered and not left, in a record that nests; kept on a work list
//   own list  the list of itself that makes a record nest; its last field
//   sink      what an encoding is written to: a writer stores octets, a counter counts them
//   room      octets that a sink still has; writing begins at the end and moves to the front
//   guess     about how long an encoding gets; only time depends on it
//   dropped   read and checked, but not kept: the structure has no room for it
#pragma once

#ifndef __cpp_exceptions
#error "The source of a module is compiled with exceptions: exhausted memory goes through it."
#endif

#include "asn1/codec/decode.h"
#include "asn1/codec/encode.h"
#include "asn1/codec/local_writer.h"
#include "asn1/codec/record_codec.h"
#include "asn1/codec/release.h"
#include "asn1/codec/tables.h"
#include "asn1/envelope.h"
#include "asn1/record/record.h"

namespace zr {

template <class S>
constexpr unsigned char* (*local_write_of())(local_writer, const void*) {
    if constexpr (has_texts<S>()) return &write_outlined_record<local_writer, S>;
    return nullptr;
}

template <class S>
constexpr octet_position (*local_read_of())(octet_position, octet_position, void*, local_blocks) {
    if constexpr (has_texts<S>()) return &read_outlined_record<S, local_blocks>;
    return nullptr;
}

template <class S, bool IsChain>
constexpr size_t (*chain_counter_of())(const void*, size_t) {
    if constexpr (IsChain) return &count_chain<S>;
    return nullptr;
}

template <class S>
constexpr record_codec codec_of = {
    &write_outlined_record<writer, S>,
    &write_outlined_record<counter, S>,
    local_write_of<S>(),
    &read_outlined_record<S>,
    &read_outlined_record<S, packed_blocks*>,
    &read_outlined_record<S, strict_blocks>,
    local_read_of<S>(),
    &release_outlined<members_after::cleared, S>,
    chain_counter_of<S, contains_itself<S>()>(),
    static_cast<uint32_t>(min_octets<S>()),
    typical_octets<S>(),
    varying_table<S>::fields.fields,
    static_cast<uint32_t>(count_varying<S>()),
    has_secrets<S>(),
    is_leaf<S>(),
};

template <class S>
constexpr record_type make_record_type() {
    static_assert(sizeof(S) <= max_structure, "a structure of moderate size");
    static_assert(describes_all_members<S>(), "each member of S belongs to one field, in the structure's order");
    return {record<S>::name,
            record<S>::binding_name,
            record<S>::module,
            field_table<S>::fields.fields,
            static_cast<uint32_t>(field_count_of<S>),
            sizeof(S),
            &make_object<typename record<S>::binding_type>,
            &codec_of<S>};
}

// A flat structure is always small: it is written on the stack first.
template <class S>
int encode_structure(zr_asn_buffer_t& out, const S& in) {
    if constexpr (is_flat<S>() && !has_secrets<S>()) {
        unsigned char room[256];
        writer sink(room + sizeof room, room);
        if (write_record(sink, in) && write_envelope_header(sink))
            return hand_out_copy(out, sink.start(), static_cast<size_t>(room + sizeof room - sink.start()));
    }
    return record<S>::type.encode(out, &in);
}

// Copies the fields of a flat structure one by one: a copy as a whole would wait for the stores of its parts.
template <class S, size_t... I>
ZR_INLINE void copy_flat(S& to, const S& from, std::index_sequence<I...>) {
    const auto copy = [&](auto index) {
        using F = field_at<S, decltype(index)::value>;
        if constexpr (F::value == value_kind::record) {
            copy_flat(member_of<F>(to), member_of<F>(from), field_indices<typename F::value_type>());
        } else if constexpr (F::value == value_kind::fixed_octets) {
            copy_fixed<F::size>(member_of<F>(to), member_of<F>(from));
        } else if constexpr (has_member(F::value)) {
            member_of<F>(to) = member_of<F>(from);
        }
    };
    (copy(std::integral_constant<size_t, I>()), ...);
}

// A flat structure needs neither memory nor release.
template <class S>
int decode_structure(const zr_asn_buffer_t& in, S& out) {
    if constexpr (is_flat<S>()) {
        const unsigned char* contents = nullptr;
        S made{};
        if (open_envelope(in, envelope_version, contents) == 0 &&
            read_record(contents, static_cast<const unsigned char*>(in.data) + in.length, made) != nullptr) {
            copy_flat(out, made, field_indices<S>());
            return 0;
        }
    }
    return record<S>::type.decode(in, &out);
}

// With texts in the local code set. A record without texts is the same in every code set.
template <class S>
int encode_local_structure(zr_asn_buffer_t& out, const S& in) {
    if constexpr (has_texts<S>()) return record<S>::type.encode_lcs(out, &in);
    return encode_structure(out, in);
}
template <class S>
int decode_local_structure(const zr_asn_buffer_t& in, S& out) {
    if constexpr (has_texts<S>()) return record<S>::type.decode_lcs(in, &out);
    return decode_structure(in, out);
}

// A list of records at run time.
template <class... Structures>
struct module_records {
    static constexpr const record_type* list[] = {&record<Structures>::type...};
};

template <class... Structures>
constexpr record_module make_module(const char* name) {
    return {name, module_records<Structures...>::list, sizeof...(Structures)};
}

}  // namespace zr

// ZR_DEFINE_MODULE(module, structures...) is the module's source: it makes the records of the structures, at most 16,
// with their entry points, and the module that the registry lists (asn1/record/registry.h).
#define ZR_DEFINE_MODULE(module_name, ...) ZR_DEFINE_MODULE_OF(ZR_DEFINE_RECORD, module_name, __VA_ARGS__)

// ZR_DEFINE_MODULE_OF_CLASSES is the same for structures of ZR_RECORD_OF_CLASS.
#define ZR_DEFINE_MODULE_OF_CLASSES(module_name, ...) ZR_DEFINE_MODULE_OF(ZR_DEFINE_TYPE, module_name, __VA_ARGS__)

#define ZR_DEFINE_MODULE_OF(define, module_name, ...)       \
    ZR_FOR_EACH(define, __VA_ARGS__)                        \
    extern const zr::record_module zr_module_##module_name; \
    const zr::record_module zr_module_##module_name = zr::make_module<__VA_ARGS__>(#module_name)

#define ZR_DEFINE_TYPE(structure) const zr::record_type zr::record<structure>::type = zr::make_record_type<structure>();

#define ZR_DEFINE_RECORD(structure)                                                                            \
    ZR_DEFINE_TYPE(structure)                                                                                  \
    int zrAsnEncodeObj(zr_asn_buffer_t& out, structure& in) { return zr::encode_structure(out, in); }          \
    int zrAsnEncodeObjLCS(zr_asn_buffer_t& out, structure& in) { return zr::encode_local_structure(out, in); } \
    int zrAsnDecodeObj(zr_asn_buffer_t& in, structure& out) { return zr::decode_structure(in, out); }          \
    int zrAsnDecodeObjLCS(zr_asn_buffer_t& in, structure& out) { return zr::decode_local_structure(in, out); } \
    void zrAsnFreeObj(structure& s) { zr::release_record(s); }

// Applies a macro to each of up to 16 arguments.
#define ZR_FOR_EACH(apply, ...)                                                                                       \
    ZR_PICK_17TH(__VA_ARGS__, ZR_EACH_16, ZR_EACH_15, ZR_EACH_14, ZR_EACH_13, ZR_EACH_12, ZR_EACH_11, ZR_EACH_10,     \
                 ZR_EACH_9, ZR_EACH_8, ZR_EACH_7, ZR_EACH_6, ZR_EACH_5, ZR_EACH_4, ZR_EACH_3, ZR_EACH_2, ZR_EACH_1, ) \
    (apply, __VA_ARGS__)
#define ZR_PICK_17TH(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, picked, ...) picked
#define ZR_EACH_1(apply, one) apply(one)
#define ZR_EACH_2(apply, one, ...) apply(one) ZR_EACH_1(apply, __VA_ARGS__)
#define ZR_EACH_3(apply, one, ...) apply(one) ZR_EACH_2(apply, __VA_ARGS__)
#define ZR_EACH_4(apply, one, ...) apply(one) ZR_EACH_3(apply, __VA_ARGS__)
#define ZR_EACH_5(apply, one, ...) apply(one) ZR_EACH_4(apply, __VA_ARGS__)
#define ZR_EACH_6(apply, one, ...) apply(one) ZR_EACH_5(apply, __VA_ARGS__)
#define ZR_EACH_7(apply, one, ...) apply(one) ZR_EACH_6(apply, __VA_ARGS__)
#define ZR_EACH_8(apply, one, ...) apply(one) ZR_EACH_7(apply, __VA_ARGS__)
#define ZR_EACH_9(apply, one, ...) apply(one) ZR_EACH_8(apply, __VA_ARGS__)
#define ZR_EACH_10(apply, one, ...) apply(one) ZR_EACH_9(apply, __VA_ARGS__)
#define ZR_EACH_11(apply, one, ...) apply(one) ZR_EACH_10(apply, __VA_ARGS__)
#define ZR_EACH_12(apply, one, ...) apply(one) ZR_EACH_11(apply, __VA_ARGS__)
#define ZR_EACH_13(apply, one, ...) apply(one) ZR_EACH_12(apply, __VA_ARGS__)
#define ZR_EACH_14(apply, one, ...) apply(one) ZR_EACH_13(apply, __VA_ARGS__)
#define ZR_EACH_15(apply, one, ...) apply(one) ZR_EACH_14(apply, __VA_ARGS__)
#define ZR_EACH_16(apply, one, ...) apply(one) ZR_EACH_15(apply, __VA_ARGS__)
