// Describing a record: its structure's one list of fields, its binding class and its entry points.
#pragma once

#include "asn1/record/binding.h"
#include "asn1/record/direct.h"
#include "asn1/record/registry.h"
#include "asn1/zrasnapi.h"

// ZR_RECORD(module, structure, binding class, fields...) stands behind the structure in its module's header. The
// fields are made with the builders of asn1/record/field.h. It declares the binding class and five entry points:
//
//   zrAsnEncodeObj  gives the encoding of `in` in `out`; the receiver releases it with zr_asn_buffer_free.
//   zrAsnDecodeObj  fills `out` from `in`, which is only read. After 275062885 (memory ended, or there are more elements
//                   than a count can hold) and 275063211 (a text that cannot be converted) `out` is all zero; after any
//                   other failure it is, octet for octet, as the caller gave it. A failed call leaves no block behind.
//   zrAsnFreeObj    releases what a decode allocated inside the structure (not the structure itself), and leaves pointers
//                   null and counts 0. A structure that was zero before a decode may be released whatever that decode
//                   answered; one that was not, after 0, 275062885 and 275063211 only.
//
// The forms whose names end in LCS take and give texts in the process's local code set, the others in UTF-8. All return
// 0 or a status of asn1/asnbase/status.h; exhausted memory is reported to standard error too.
#define ZR_RECORD(module_name, structure, binding_class, ...)          \
    template <>                                                        \
    struct zr::record<structure> {                                     \
        using self = structure;                                        \
        static constexpr const char* name = #structure;                \
        static constexpr const char* binding_name = #binding_class;    \
        static constexpr const char* module = #module_name;            \
        static constexpr auto fields = zr::sequence(__VA_ARGS__);      \
        ZR_API static const record_type type;                          \
    };                                                                 \
    using binding_class = zr::binding<structure>;                      \
    ZR_API int zrAsnEncodeObj(zr_asn_buffer_t& out, structure& in);    \
    ZR_API int zrAsnEncodeObjLCS(zr_asn_buffer_t& out, structure& in); \
    ZR_API int zrAsnDecodeObj(zr_asn_buffer_t& in, structure& out);    \
    ZR_API int zrAsnDecodeObjLCS(zr_asn_buffer_t& in, structure& out); \
    ZR_API void zrAsnFreeObj(structure& s)

// ZR_DEFINE_RECORD(structure) stands in the module's source.
#define ZR_DEFINE_RECORD(structure)                                                                   \
    const zr::record_type zr::record<structure>::type = zr::make_record_type<structure>();            \
    int zrAsnEncodeObj(zr_asn_buffer_t& out, structure& in) { return zr::encode_structure(out, in); } \
    int zrAsnEncodeObjLCS(zr_asn_buffer_t& out, structure& in) {                                      \
        return zr::record<structure>::type.encode_lcs(out, &in);                                      \
    }                                                                                                 \
    int zrAsnDecodeObj(zr_asn_buffer_t& in, structure& out) { return zr::decode_structure(in, out); } \
    int zrAsnDecodeObjLCS(zr_asn_buffer_t& in, structure& out) {                                      \
        return zr::record<structure>::type.decode_lcs(in, &out);                                      \
    }                                                                                                 \
    void zrAsnFreeObj(structure& s) { zr::release_record(s); }                                        \
    static_assert(true, "")

// ZR_DEFINE_MODULE(module, structures...) closes the module's source: the records that the registry lists for it
// (asn1/record/registry.h).
#define ZR_DEFINE_MODULE(module_name, ...)                  \
    extern const zr::record_module zr_module_##module_name; \
    const zr::record_module zr_module_##module_name = zr::make_module<__VA_ARGS__>(#module_name)
