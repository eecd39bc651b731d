// Describing a record: its structure's one list of fields, its binding class and its entry points.
#pragma once

#include "asn1/record/binding.h"
#include "asn1/record/registry.h"
#include "asn1/zrasnapi.h"

// ZR_RECORD(module, structure, binding class, fields...) stands behind the structure in its module's header. The
// fields are made with the builders of asn1/record/field.h; each member of the structure belongs to exactly one of
// them, in the structure's order. It declares the binding class and five entry points:
//
//   zrAsnEncodeObj  gives the encoding of `in` in `out`; the receiver releases it with zr_asn_buffer_free.
//   zrAsnDecodeObj  fills `out` from `in`, which is only read. After 275062885 (memory ended, or there are more
//   elements
//                   than a count can hold) and 275063211 (a text that cannot be converted) `out` is all zero; after any
//                   other failure it is, octet for octet, as the caller gave it. A failed call leaves no block behind.
//   zrAsnFreeObj    releases what a decode allocated inside the structure (not the structure itself), and leaves
//   pointers
//                   null and counts 0. A structure that was zero before a decode may be released whatever that decode
//                   answered; one that was not, after 0, 275062885 and 275063211 only.
//
// The forms whose names end in LCS take and give texts in the process's local code set, the others in UTF-8. All return
// 0 or a status of asn1/status.h; exhausted memory is reported to standard error too. A structure that is encoded and a
// buffer that is decoded may be const as well (below).
#define ZR_RECORD(module_name, structure, binding_class, ...)                        \
    template <>                                                                      \
    struct zr::record<structure> {                                                   \
        using self = structure;                                                      \
        static constexpr const char* name = #structure;                              \
        static constexpr const char* binding_name = #binding_class;                  \
        static constexpr const char* module = #module_name;                          \
        static constexpr auto fields = zr::sequence(__VA_ARGS__);                    \
        static constexpr bool has_entry_points = true;                               \
        using binding_type = binding<structure>;                                     \
        ZR_API static const record_type type;                                        \
    };                                                                               \
    using binding_class = zr::binding<structure>;                                    \
    [[nodiscard]] ZR_API int zrAsnEncodeObj(zr_asn_buffer_t& out, structure& in);    \
    [[nodiscard]] ZR_API int zrAsnEncodeObjLCS(zr_asn_buffer_t& out, structure& in); \
    [[nodiscard]] ZR_API int zrAsnDecodeObj(zr_asn_buffer_t& in, structure& out);    \
    [[nodiscard]] ZR_API int zrAsnDecodeObjLCS(zr_asn_buffer_t& in, structure& out); \
    ZR_API void zrAsnFreeObj(structure& s)

// ZR_RECORD_OF_CLASS describes a structure in the same way that has a hand-written binding class, of which each object
// registers the objects of all fields in their order, and no entry points.
#define ZR_RECORD_OF_CLASS(module_name, structure, binding_class, ...) \
    template <>                                                        \
    struct zr::record<structure> {                                     \
        using self = structure;                                        \
        static constexpr const char* name = #structure;                \
        static constexpr const char* binding_name = #binding_class;    \
        static constexpr const char* module = #module_name;            \
        static constexpr auto fields = zr::sequence(__VA_ARGS__);      \
        static constexpr bool has_entry_points = false;                \
        using binding_type = binding_class;                            \
        ZR_API static const record_type type;                          \
    }

namespace zr {

template <class S, class = void>
struct has_entry_points : std::false_type {};
template <class S>
struct has_entry_points<S, std::enable_if_t<record<S>::has_entry_points>> : std::true_type {};

// What the functions on const structures and buffers return: there are none for what has no entry points.
template <class S>
using status_of = std::enable_if_t<has_entry_points<S>::value, int>;

}  // namespace zr

// The entry points on const structures and buffers, for all records.
template <class S>
[[nodiscard]] zr::status_of<S> zrAsnEncodeObj(zr_asn_buffer_t& out, const S& in) {
    return zr::record<S>::type.encode(out, &in);
}
template <class S>
[[nodiscard]] zr::status_of<S> zrAsnEncodeObjLCS(zr_asn_buffer_t& out, const S& in) {
    return zr::record<S>::type.encode_lcs(out, &in);
}
template <class S>
[[nodiscard]] zr::status_of<S> zrAsnDecodeObj(const zr_asn_buffer_t& in, S& out) {
    return zr::record<S>::type.decode(in, &out);
}
template <class S>
[[nodiscard]] zr::status_of<S> zrAsnDecodeObjLCS(const zr_asn_buffer_t& in, S& out) {
    return zr::record<S>::type.decode_lcs(in, &out);
}

// Where no entry point fits, the compiler comes to one of these instead of naming those of all records.
template <class Call = void>
[[nodiscard]] int zrAsnEncodeObj(...) {
    static_assert(zr::is_refused<Call>, "zrAsnEncodeObj takes a buffer and a record; is its header included?");
    return 0;
}
template <class Call = void>
[[nodiscard]] int zrAsnEncodeObjLCS(...) {
    static_assert(zr::is_refused<Call>, "zrAsnEncodeObjLCS takes a buffer and a record; is its header included?");
    return 0;
}
template <class Call = void>
[[nodiscard]] int zrAsnDecodeObj(...) {
    static_assert(zr::is_refused<Call>, "zrAsnDecodeObj takes a buffer and a record, not a const one");
    return 0;
}
template <class Call = void>
[[nodiscard]] int zrAsnDecodeObjLCS(...) {
    static_assert(zr::is_refused<Call>, "zrAsnDecodeObjLCS takes a buffer and a record, not a const one");
    return 0;
}
template <class Call = void>
void zrAsnFreeObj(...) {
    static_assert(zr::is_refused<Call>, "zrAsnFreeObj takes a record, not a const one");
}
