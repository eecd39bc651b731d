// Calls every entry point on every workload while callgrind looks, and has it write what it saw after each call.
// bench/counts.py runs this program and adds up what the library itself executed.
//
// Each call is made twice and looked at the second time: what happens once in a process (symbols that are bound at
// their first use) does not count. Every octet and value is checked, so that nothing is counted that went wrong.
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "asn1/asn_yvobjs.h"
#include "asn1/zrasnapi.h"
#include "bench/acl/workload.h"
#include "bench/attrlist/workload.h"
#include "bench/audit/workload.h"
#include "bench/counts/growth.h"
#include "bench/counts/odd_forms.h"
#include "bench/decision/workload.h"
#include "bench/harness/peer.h"
#include "bench/objects/workload.h"
#include "bench/scaling/chains.h"
#include "bench/uuid/workload.h"
#include "zrasn/decode.h"

namespace bench {
namespace {

// What is called, and the names in the rows, which are called "record/entry point". A call without a name has no row.
template <class S>
struct entry_points {
    const char* encode_name;
    int (*encode)(zr_asn_buffer_t& out, S& in);
    const char* decode_name;
    int (*decode)(zr_asn_buffer_t& in, S& out);
    const char* release_name;
    void (*release)(S& s);
};

template <class S>
constexpr entry_points<S> utf8_calls = {"zrAsnEncodeObj", zrAsnEncodeObj, "zrAsnDecodeObj",
                                        zrAsnDecodeObj,   "zrAsnFreeObj", zrAsnFreeObj};

// What these make is released by the same function as above.
template <class S>
constexpr entry_points<S> local_calls = {"zrAsnEncodeObjLCS", zrAsnEncodeObjLCS, "zrAsnDecodeObjLCS",
                                         zrAsnDecodeObjLCS,   nullptr,           zrAsnFreeObj};

constexpr int version = 2;

template <class S, zrasn_type_code type>
constexpr entry_points<S> typed_calls = {
    "zrasn_encode_obj", [](zr_asn_buffer_t& out, S& in) { return zrasn_encode_obj(version, &in, type, out); },
    "zrasn_decode_obj", [](zr_asn_buffer_t& in, S& out) { return zrasn_decode_obj(version, in, type, &out); },
    "zrasn_obj_free",   [](S& s) { zrasn_obj_free(version, type, &s); }};

void check(bool holds, const std::string& row) {
    if (holds) return;
    std::fprintf(stderr, "%s does not do what it should\n", row.c_str());
    std::exit(1);
}

// Makes a call, and a row of it when it is `looked_at` and has a name.
template <class Call>
void call(bool looked_at, const std::string& record, const char* name, const Call& made) {
    if (!looked_at || name == nullptr) {
        made();
        return;
    }
    const std::string row = record + "/" + name;
    CALLGRIND_START_INSTRUMENTATION;
    made();
    CALLGRIND_STOP_INSTRUMENTATION;
    CALLGRIND_DUMP_STATS_AT(row.c_str());
}

template <class S>
std::string encoding_of(const std::string& what, const entry_points<S>& points, S& record, bool looked_at) {
    zr_asn_buffer_t out{};
    int status = -1;
    call(looked_at, what, points.encode_name, [&] { status = points.encode(out, record); });
    check(status == 0, what);
    std::string encoding(reinterpret_cast<const char*>(out.data), out.length);
    zr_asn_buffer_free(out);
    return encoding;
}

// The call for octets from outside, strictly: what it makes is released as above.
template <class S>
constexpr entry_points<S> strict_calls = {nullptr,
                                          zrAsnEncodeObj,
                                          "zr::decode-strict",
                                          [](zr_asn_buffer_t& in, S& out) -> int {
                                              zr::decode_options options;
                                              options.strict = true;
                                              zr::decode_report report;
                                              return zr::decode(in.data, in.length, out, options, report);
                                          },
                                          nullptr,
                                          zrAsnFreeObj};

// Decodes into a packed record, which keeps its block.
template <class S>
void count_packed(const std::string& what, std::string input) {
    zr::packed<S> record;
    const zr_asn_buffer_t in{static_cast<unsigned>(input.size()), reinterpret_cast<unsigned char*>(&input[0])};
    for (const bool looked_at : {false, true}) {
        int status = -1;
        call(looked_at, what, "zr::packed", [&] { status = record.decode(in); });
        check(status == 0, what);
    }
    zr_asn_buffer_t out{};
    check(zrAsnEncodeObj(out, *record) == 0 && input == std::string(reinterpret_cast<char*>(out.data), out.length),
          what);
    zr_asn_buffer_free(out);
}

// Decodes `input`, whose values are those of `expected`.
template <class S>
void count_decoding(const std::string& what, const entry_points<S>& points, std::string input,
                    const std::string& expected) {
    for (const bool looked_at : {false, true}) {
        zr_asn_buffer_t in{static_cast<unsigned>(input.size()), reinterpret_cast<unsigned char*>(&input[0])};
        S record{};
        int status = -1;
        call(looked_at, what, points.decode_name, [&] { status = points.decode(in, record); });
        check(status == 0 && encoding_of(what, points, record, false) == expected, what);
        call(looked_at, what, points.release_name, [&] { points.release(record); });
    }
}

template <class S>
std::string count(const std::string& what, const entry_points<S>& points, S& record) {
    const std::string encoding = encoding_of(what, points, record, false);
    check(encoding_of(what, points, record, true) == encoding, what);
    count_decoding(what, points, encoding, encoding);
    return encoding;
}

template <class Workload>
std::string count_workload() {
    using structure = typename Workload::structure;
    structure& record = sample<Workload>();
    const std::string encoding = count<structure>(Workload::name, utf8_calls<structure>, record);
    check(count<structure>(Workload::name, local_calls<structure>, record) == encoding, Workload::name);
    count_decoding<structure>(Workload::name, strict_calls<structure>, encoding, encoding);
    count_packed<structure>(Workload::name, encoding);
    return encoding;
}

// Only decoding: what it makes is the same as without the odd form, and so is releasing it.
void count_odd_acl(const char* what, const std::string& encoding, const form_chooser& choose) {
    const std::string odd = encoding.substr(0, envelope_length) +
                            in_other_forms(std::string_view(encoding).substr(envelope_length), choose);
    check(odd != encoding, what);
    entry_points<acl_ext_s_t> calls = utf8_calls<acl_ext_s_t>;
    calls.release_name = nullptr;
    count_decoding(what, calls, odd, encoding);
}

// Gives `how` to one value with this identifier octet, the one with `before` others in front of it.
form_chooser only(unsigned char identifier, int before, form how) {
    return [=, seen = 0](unsigned char found) mutable {
        return found == identifier && seen++ == before ? how : form::shortest;
    };
}

void count_odd_acls(const std::string& encoding) {
    constexpr unsigned char sequence = 0x30, utf8_string = 0x0C;
    // Half of the values lie before the odd one.
    count_odd_acl("acl-one-indefinite", encoding, only(sequence, 500, form::indefinite_length));
    count_odd_acl("acl-indefinite", encoding,
                  [](unsigned char found) { return found == sequence ? form::indefinite_length : form::shortest; });
    count_odd_acl("acl-one-segmented", encoding, only(utf8_string, 100, form::segmented));
    count_odd_acl("acl-long-lengths", encoding, [](unsigned char) { return form::long_length; });
}

void count_chains() {
    builder make;
    constexpr size_t levels = 256;
    ejauditelement_s_t elements = make_element_chain(make, levels);
    count("elements-256-deep", utf8_calls<ejauditelement_s_t>, elements);
    namevalue_s_t nodes = make_node_chain(make, levels);
    count("nodes-256-deep", utf8_calls<namevalue_s_t>, nodes);
}

void count_type_codes() {
    builder make;
    yvobj_update_list_s_t list{1000, make.array<yvobj_update_s_t>(1000)};
    for (uint32_t i = 0; i < list.count; ++i)
        list.updates[i] = {static_cast<int32_t>(make.number(16)), make.text(16, 48),
                           static_cast<int32_t>(make.number(100000))};
    count("updates-1000", typed_calls<yvobj_update_list_s_t, zrasn_type_update_list>, list);
    cert_request_in request{make.text(16, 48), make.text(16, 48), 1000, make.octets(1000)};
    count("certificate", typed_calls<cert_request_in, zrasn_type_cert_request>, request);
}

// Rows of octets that double, which are called "growth:shape:octets/what is called". Each way may refuse what it does
// not take; what the plain one takes has to encode too.
template <class S>
void count_growth(const shape& grown, std::string input) {
    const std::string what = "growth:" + std::string(grown.name) + ":" + std::to_string(input.size());
    zr_asn_buffer_t in{static_cast<unsigned>(input.size()), reinterpret_cast<unsigned char*>(&input[0])};
    for (const bool looked_at : {false, true}) {
        for (const entry_points<S>& points : {utf8_calls<S>, local_calls<S>, strict_calls<S>}) {
            const bool is_strict = points.decode == strict_calls<S>.decode;
            S record{};
            int status = -1;
            call(looked_at, what, points.decode_name, [&] { status = points.decode(in, record); });
            check((status != 0) == grown.refused || (status != 0 && is_strict), what);
            if (status == 0) encoding_of(what, points, record, looked_at);
            call(looked_at, what, points.release_name, [&] { points.release(record); });
        }
        zr::packed<S> packed;
        int status = -1;
        call(looked_at, what, "zr::packed", [&] { status = packed.decode(in); });
        check((status != 0) == grown.refused, what);
    }
}

void count_shapes() {
    for (const shape* grown = shapes; grown->name != nullptr; ++grown) {
        // Smaller ones go other ways: into the stack, and into a block as long as the guess.
        for (const size_t octets : {65536, 131072}) {
            if (grown->is_chain) {
                count_growth<namevalue_s_t>(*grown, grown->make(octets));
            } else {
                count_growth<attrlist_s_t>(*grown, grown->make(octets));
            }
        }
    }
}

}  // namespace
}  // namespace bench

int main() {
    using namespace bench;
    count_workload<uuid_workload>();
    count_workload<attrlist_workload>();
    count_workload<decision_workload>();
    count_odd_acls(count_workload<acl_workload>());
    count_workload<audit_workload>();
    count_workload<objects_workload>();
    count_chains();
    count_type_codes();
    count_shapes();
}
