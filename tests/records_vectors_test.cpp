// Golden vectors: what an encoder that knows nothing of the library makes of the same values (vectors/README.md).
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "asn1/asn_yvobjs.h"
#include "support/records_json.h"
#include "support/routes.h"
#include "support/vectors.h"

namespace zr_test {
namespace {

using nlohmann::json;

// A record of the registry, on both ways.
void check(const zr::record_type& type, const json& value, const octets& ber) {
    structure original(type);
    fill_from_json(type, original.get(), value);
    for (const route& way : routes) {
        SCOPED_TRACE(way.name);
        EXPECT_EQ(hex(encode(way, original).ber), hex(ber));
        structure copy(type);
        ASSERT_EQ(decode(way, ber, copy), 0);
        EXPECT_EQ(difference(type, original.get(), copy.get()), "");
    }
}

// The records without fields in the registry.
void from_json(const json& value, yvobj_update_s_t& out) {
    out.int_a = value.at("int_a");
    out.name = copy_text(value.at("name"));
    out.int_b = value.at("int_b");
}

void from_json(const json& value, yvobj_update_list_s_t& out) {
    const json& updates = value.at("updates");
    out.updates = static_cast<yvobj_update_s_t*>(std::calloc(updates.size() + 1, sizeof *out.updates));
    for (const json& update : updates)
        from_json(update, out.updates[out.count++]);
}

void from_json(const json& value, cert_request_in& out) {
    out.str_a = copy_text(value.at("str_a"));
    out.str_b = copy_text(value.at("str_b"));
    const octets body = value.at("body").is_null() ? octets() : bytes(value.at("body").get<std::string>());
    out.body_length = static_cast<uint32_t>(body.size());
    if (!body.empty()) out.body = reinterpret_cast<unsigned char*>(copy_text({body.begin(), body.end()}));
}

template <class Binding, class S>
void check_hand_written(const json& value, const octets& ber) {
    S original{}, copy{};
    from_json(value, original);
    Binding object(zr_normal);
    envelope in(ber);
    zr_asn_buffer_t buffer = in.buffer();
    ASSERT_EQ(zr_asnbase::loadObject(object, 2, buffer), 0);
    ASSERT_EQ(object.get_value(copy), 0);
    for (S* each : {&original, &copy}) {
        Binding writer(zr_normal);
        ASSERT_EQ(writer.set_value(*each), 0);
        zr_asn_buffer_t out{};
        ASSERT_EQ(zr_asnbase::saveEncoding(writer, 2, out), 0);
        EXPECT_EQ(hex(out.data, out.length), hex(in.all()));
        zr_asn_buffer_free(out);
        Binding::free_obj(*each);
    }
}

using checker = void (*)(const json& value, const octets& ber);
const std::map<std::string, checker> hand_written = {
    {"yvobj_update_s_t", check_hand_written<zr_asn_yvobj_update_t, yvobj_update_s_t>},
    {"yvobj_update_list_s_t", check_hand_written<zr_asn_yvobj_update_list_t, yvobj_update_list_s_t>},
    {"cert_request_in", check_hand_written<zr_asn_cert_request_in, cert_request_in>},
};

TEST(vectors, of_every_record) {
    std::map<std::string, int> counts;
    each_vector([&](const std::string& name, const std::string& text, const octets& ber) {
        SCOPED_TRACE(testing::Message() << name << " " << text);
        ++counts[name];
        const auto special = hand_written.find(name);
        const zr::record_type* type = zr::find_record(name);
        ASSERT_TRUE(type != nullptr || special != hand_written.end());
        type != nullptr ? check(*type, json::parse(text), ber) : special->second(json::parse(text), ber);
    });
    // A record that was added may have none yet.
    EXPECT_GE(std::count_if(counts.begin(), counts.end(), [](const auto& record) { return record.second >= 3; }), 65);
}

}  // namespace
}  // namespace zr_test
