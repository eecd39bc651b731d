#include <cstdlib>

#include "asn1/asn_yvobjs.h"
#include "asn1/zrasnapi.h"
#include "bench/harness/peer.h"
#include "bench/values/values.h"

namespace bench {
namespace {

constexpr int version = 2;
constexpr uint32_t updates = 100;
constexpr uint32_t body_octets = 1000;

// A value and its encoding, which live as long as the program.
template <class Value>
struct sample_of {
    sample_of(unsigned int code, const Value& made) : type(code), value(made) {
        if (zrasn_encode_obj(version, &value, type, encoding) != 0) std::abort();
    }

    unsigned int type;
    Value value;
    zr_asn_buffer_t encoding{};
};

template <class Value>
void add(std::vector<timed_case>& cases, const char* what, sample_of<Value>& of) {
    const auto add_case = [&](const char* operation, std::function<void(size_t)> run) {
        cases.push_back({what + std::string("/type code/") + operation, static_cast<double>(of.encoding.length), 1,
                         [] {}, std::move(run), [] {}});
    };
    add_case("encode", [&of](size_t times) {
        for (; times != 0; --times) {
            zr_asn_buffer_t out{};
            if (zrasn_encode_obj(version, &of.value, of.type, out) != 0) std::abort();
            keep(out.data);
            zr_asn_buffer_free(out);
        }
    });
    add_case("decode", [&of](size_t times) {
        for (; times != 0; --times) {
            Value value{};
            if (zrasn_decode_obj(version, of.encoding, of.type, &value) != 0) std::abort();
            keep(&value);
            zrasn_obj_free(version, of.type, &value);
        }
    });
}

}  // namespace

std::vector<timed_case> type_code_cases() {
    static builder make;
    static yvobj_update_list_s_t list{updates, make.array<yvobj_update_s_t>(updates)};
    for (uint32_t i = 0; i < updates; ++i)
        list.updates[i] = {static_cast<int32_t>(i), make.text(20, 60), static_cast<int32_t>(make.number(1u << 15))};
    static sample_of<cert_request_in> request(
        zrasn_type_cert_request, {make.text(20, 60), make.text(20, 60), body_octets, make.octets(body_octets)});
    static sample_of<yvobj_update_list_s_t> update_list(zrasn_type_update_list, list);
    static sample_of<zrasn_integer_value> integer(zrasn_type_integer, 100000);

    std::vector<timed_case> cases;
    add(cases, "259: certificate request", request);
    add(cases, "260: 100 updates", update_list);
    add(cases, "262: integer", integer);
    return cases;
}

}  // namespace bench
