// The ways between a structure and its octets, which have to agree.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "asn1/asn_yvobjs.h"
#include "asn1/asnbase/buffer.h"
#include "asn1/record/tree.h"
#include "asn1/zrasnapi.h"
#include "support/ber_rewriter.h"
#include "support/records.h"

namespace zr_test {

struct route {
    const char* name;
    int (*encode)(const zr::record_type& type, zr_asn_buffer_t& out, void* in);
    int (*decode)(const zr::record_type& type, zr_asn_buffer_t& in, void* out);
};

// The ways are inline so that a program links with what it uses of them alone, also where nothing is optimised: the
// object tree's are in no shared library.
//
// A hand-written binding class. What it answers with the status alone is reported like all exhausted memory.
template <class Binding, class S>
inline constexpr route class_route = {"binding class",
                                      [](const zr::record_type& type, zr_asn_buffer_t& out, void* in) {
                                          return zr::guarded([&] {
                                              Binding object(zr_normal);
                                              const int status = object.set_value(*static_cast<S*>(in));
                                              if (status != 0)
                                                  zr::throw_out_of_memory("ASN: Memory error", type.module);
                                              return zr_asnbase::saveEncoding(object, 2, out);
                                          });
                                      },
                                      [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) {
                                          S made{};
                                          const int status = zr::guarded([&] {
                                              Binding object(zr_normal);
                                              if (int loaded = zr_asnbase::loadObject(object, 2, in)) return loaded;
                                              if (object.get_value(made) != 0)
                                                  zr::throw_out_of_memory("ASN: Memory error", type.module);
                                              return 0;
                                          });
                                          if (status == 0) {
                                              std::memcpy(out, &made, sizeof made);
                                          } else {
                                              Binding::free_obj(made);
                                              if (zr::clears_structure(status)) std::memset(out, 0, sizeof made);
                                          }
                                          return status;
                                      }};

// The class of a record that has one; null for all others.
inline const route* class_of(const zr::record_type& type) {
    const std::string_view name = type.name;
    if (name == "yvobj_update_s_t") return &class_route<zr_asn_yvobj_update_t, yvobj_update_s_t>;
    if (name == "yvobj_update_list_s_t") return &class_route<zr_asn_yvobj_update_list_t, yvobj_update_list_s_t>;
    return name == "cert_request_in" ? &class_route<zr_asn_cert_request_in, cert_request_in> : nullptr;
}

// The plain entry points, and the object tree.
inline constexpr route entry_points = {
    "entry points", [](const zr::record_type& type, zr_asn_buffer_t& out, void* in) { return type.encode(out, in); },
    [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) { return type.decode(in, out); }};
inline constexpr route object_tree = {"object tree",
                                      [](const zr::record_type& type, zr_asn_buffer_t& out, void* in) {
                                          if (const route* own = class_of(type)) return own->encode(type, out, in);
                                          return zr::encode_tree(type, zr_normal, out, in);
                                      },
                                      [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) {
                                          if (const route* own = class_of(type)) return own->decode(type, in, out);
                                          return zr::decode_tree(type, zr_normal, in, out);
                                      }};
// The forms for the local code set, which for ASCII is UTF-8.
inline constexpr route local_entry_points = {
    "LCS entry points",
    [](const zr::record_type& type, zr_asn_buffer_t& out, void* in) { return type.encode_lcs(out, in); },
    [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) { return type.decode_lcs(in, out); }};
inline constexpr route local_object_tree = {"object tree for local texts",
                                            [](const zr::record_type& type, zr_asn_buffer_t& out, void* in) {
                                                return zr::encode_tree(type, zr_local_code_set, out, in);
                                            },
                                            [](const zr::record_type& type, zr_asn_buffer_t& in, void* out) {
                                                return zr::decode_tree(type, zr_local_code_set, in, out);
                                            }};

inline constexpr route routes[] = {entry_points, object_tree};

// What an encode answers: its status, and the record's octets when the header before them is right.
struct encoded {
    int status;
    octets ber;
};
inline encoded encode(const route& way, structure& in) {
    zr_asn_buffer_t out{0, nullptr};
    encoded result{way.encode(in.type(), out, in.get()), {}};
    if (result.status != 0) return result;
    const octets header(out.data, out.data + 4);
    if (header == octets{4, 2, 0xAC, 0xDC}) result.ber.assign(out.data + 4, out.data + out.length);
    zr_asn_buffer_free(out);
    return result;
}

// The octets of a record in an envelope, in a block of exactly their size.
class envelope {
public:
    explicit envelope(const octets& ber) : octets_(octets{4, 2, 0xAC, 0xDC} + ber) { octets_.shrink_to_fit(); }

    octets& all() { return octets_; }
    zr_asn_buffer_t buffer() { return {static_cast<unsigned int>(octets_.size()), octets_.data()}; }

private:
    octets octets_;
};

inline int decode(const route& way, const octets& ber, structure& out) {
    envelope in(ber);
    zr_asn_buffer_t buffer = in.buffer();
    return way.decode(out.type(), buffer, out.get());
}

// What a decoded structure holds is released by the library, completely.
inline std::string leftover_of_free(structure& decoded) {
    decoded.type().free(decoded.get());
    return leftover(decoded.type(), decoded.get());
}

}  // namespace zr_test
