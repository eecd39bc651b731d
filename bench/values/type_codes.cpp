#include <cstdlib>

#include "asn1/asn_yvobjs.h"
#include "asn1/zrasnapi.h"
#include "bench/harness/peer.h"
#include "bench/values/plain_records.h"
#include "bench/values/values.h"

namespace bench {
namespace {

constexpr int version = 2;
constexpr uint32_t updates = 100;
constexpr uint32_t body_octets = 1000;

// How a value is encoded and decoded: by the type code, or by the entry points.
template <class Value, unsigned int type>
struct by_type_code {
    static constexpr const char* name = "type code";
    static int encode(zr_asn_buffer_t& out, Value& in) { return zrasn_encode_obj(version, &in, type, out); }
    static int decode(zr_asn_buffer_t& in, Value& out) { return zrasn_decode_obj(version, in, type, &out); }
    static void release(Value& value) { zrasn_obj_free(version, type, &value); }
};
template <class Value>
struct by_entry_points {
    static constexpr const char* name = "plain record";
    static int encode(zr_asn_buffer_t& out, Value& in) { return zrAsnEncodeObj(out, in); }
    static int decode(zr_asn_buffer_t& in, Value& out) { return zrAsnDecodeObj(in, out); }
    static void release(Value& value) { zrAsnFreeObj(value); }
};

// The value and its encoding must live as long as the cases.
template <class Way, class Value>
void add(std::vector<timed_case>& cases, const char* what, Value& value) {
    static zr_asn_buffer_t encoding{};
    if (Way::encode(encoding, value) != 0) std::abort();
    const auto add_case = [&](const char* operation, std::function<void(size_t)> run) {
        cases.push_back({what + std::string("/") + Way::name + "/" + operation, static_cast<double>(encoding.length), 1,
                         [] {}, std::move(run), [] {}});
    };
    add_case("encode", [&value](size_t times) {
        for (; times != 0; --times) {
            zr_asn_buffer_t out{};
            if (Way::encode(out, value) != 0) std::abort();
            keep(out.data);
            zr_asn_buffer_free(out);
        }
    });
    add_case("decode", [](size_t times) {
        for (; times != 0; --times) {
            Value made{};
            if (Way::decode(encoding, made) != 0) std::abort();
            keep(&made);
            Way::release(made);
        }
    });
}

}  // namespace

std::vector<timed_case> type_code_cases() {
    static builder make;
    static yvobj_update_list_s_t list{updates, make.array<yvobj_update_s_t>(updates)};
    static plain_update_list plain_list{1, updates, make.array<plain_update>(updates)};
    for (uint32_t i = 0; i < updates; ++i) {
        const yvobj_update_s_t update = {static_cast<int32_t>(i), make.text(20, 60),
                                         static_cast<int32_t>(make.number(1u << 15))};
        list.updates[i] = update;
        plain_list.updates[i] = {1, update.int_a, update.name, update.int_b};
    }
    static cert_request_in request{make.text(20, 60), make.text(20, 60), body_octets, make.octets(body_octets)};
    static plain_request plain{1, request.str_a, request.str_b, body_octets, request.body};
    static zrasn_integer_value integer = 100000;

    std::vector<timed_case> cases;
    constexpr const char *certificate = "259: certificate request", *update_list = "260: 100 updates";
    add<by_type_code<cert_request_in, zrasn_type_cert_request>>(cases, certificate, request);
    add<by_entry_points<plain_request>>(cases, certificate, plain);
    add<by_type_code<yvobj_update_list_s_t, zrasn_type_update_list>>(cases, update_list, list);
    add<by_entry_points<plain_update_list>>(cases, update_list, plain_list);
    add<by_type_code<zrasn_integer_value, zrasn_type_integer>>(cases, "262: integer", integer);
    return cases;
}

}  // namespace bench
