// Golden vectors: what an encoder that knows nothing of the library makes of the same values (vectors/README.md).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "asn1/asn_yvobjs.h"
#include "support/hex.h"
#include "support/records_json.h"
#include "support/routes.h"

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
json to_json(const yvobj_update_s_t& in) { return {{"int_a", in.int_a}, {"name", in.name}, {"int_b", in.int_b}}; }

void from_json(const json& value, yvobj_update_list_s_t& out) {
    const json& updates = value.at("updates");
    out.updates = static_cast<yvobj_update_s_t*>(std::calloc(updates.size() + 1, sizeof *out.updates));
    for (const json& update : updates)
        from_json(update, out.updates[out.count++]);
}
json to_json(const yvobj_update_list_s_t& in) {
    json updates = json::array();
    for (uint32_t i = 0; i < in.count; ++i)
        updates.push_back(to_json(in.updates[i]));
    return {{"updates", updates}};
}

void from_json(const json& value, cert_request_in& out) {
    out.str_a = copy_text(value.at("str_a"));
    out.str_b = copy_text(value.at("str_b"));
    const octets body = value.at("body").is_null() ? octets() : bytes(value.at("body").get<std::string>());
    out.body_length = static_cast<uint32_t>(body.size());
    if (!body.empty()) out.body = reinterpret_cast<unsigned char*>(copy_text({body.begin(), body.end()}));
}
json to_json(const cert_request_in& in) {
    std::string body = hex(in.body, in.body_length);
    body.erase(std::remove(body.begin(), body.end(), ' '), body.end());
    return {{"str_a", in.str_a}, {"str_b", in.str_b}, {"body", body.empty() ? json() : json(body)}};
}

template <class Binding, class S>
void check_hand_written(const json& value, const octets& ber) {
    S original{};
    from_json(value, original);
    Binding writer(zr_normal);
    ASSERT_EQ(writer.set_value(original), 0);
    zr_asn_buffer_t out{};
    ASSERT_EQ(zr_asnbase::saveEncoding(writer, 2, out), 0);
    EXPECT_EQ(hex(out.data, out.length), hex(envelope(ber).all()));
    zr_asn_buffer_free(out);

    Binding reader(zr_normal);
    envelope in(ber);
    zr_asn_buffer_t buffer = in.buffer();
    ASSERT_EQ(zr_asnbase::loadObject(reader, 2, buffer), 0);
    S copy{};
    ASSERT_EQ(reader.get_value(copy), 0);
    EXPECT_EQ(to_json(copy), value);
    Binding::free_obj(copy);
    Binding::free_obj(original);
}

using checker = void (*)(const json& value, const octets& ber);
const std::map<std::string, checker> hand_written = {
    {"yvobj_update_s_t", check_hand_written<zr_asn_yvobj_update_t, yvobj_update_s_t>},
    {"yvobj_update_list_s_t", check_hand_written<zr_asn_yvobj_update_list_t, yvobj_update_list_s_t>},
    {"cert_request_in", check_hand_written<zr_asn_cert_request_in, cert_request_in>},
};

// The next line that is neither empty nor a comment; empty at the end.
std::string next_line(std::istream& file) {
    std::string line;
    while (std::getline(file, line))
        if (!line.empty() && line[0] != '#') return line;
    return "";
}

TEST(vectors, of_every_record) {
    std::map<std::string, int> counts;
    for (const auto& entry : std::filesystem::directory_iterator(ZRASN_VECTORS)) {
        if (entry.path().extension() != ".txt") continue;
        std::ifstream file(entry.path());
        for (std::string name = next_line(file); !name.empty(); name = next_line(file)) {
            const std::string text = next_line(file);
            SCOPED_TRACE(testing::Message() << name << " " << text);
            const octets ber = bytes(next_line(file));
            ++counts[name];
            const auto special = hand_written.find(name);
            const zr::record_type* type = zr::find_record(name);
            ASSERT_TRUE(type != nullptr || special != hand_written.end());
            type != nullptr ? check(*type, json::parse(text), ber) : special->second(json::parse(text), ber);
        }
    }
    // A record that was added may have none yet.
    EXPECT_GE(std::count_if(counts.begin(), counts.end(), [](const auto& record) { return record.second >= 3; }), 65);
}

}  // namespace
}  // namespace zr_test
