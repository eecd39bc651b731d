// JSON to records and back.
#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "json/base/text_output.h"
#include "json/document/record_reader.h"
#include "json/document/record_writer.h"
#include "support/routes.h"
#include "support/vectors.h"

namespace zr_test {
namespace {

using json = nlohmann::ordered_json;
using zr::json::json_layout;

std::string written(const zr::record_type& type, const void* contents, json_layout layout = json_layout::one_line) {
    zr::json::text_output out;
    zr::json::write_json(out, type, contents, layout, zr::json::secret_values::shown);
    return std::string(out.text());
}

TEST(json, of_the_golden_vectors) {
    size_t count = 0;
    each_vector([&](const std::string& name, const std::string& vector, const octets& ber) {
        const zr::record_type* type = zr::find_record(name);
        SCOPED_TRACE(name + " " + vector);
        structure read(*type), decoded(*type);
        zr::json::json_error error;
        ASSERT_TRUE(zr::json::read_json(vector, *type, read.get(), error)) << error.path << error.message;
        EXPECT_EQ(hex(encode(entry_points, read).ber), hex(ber));
        ASSERT_EQ(decode(entry_points, ber, decoded), 0);
        json expected = json::parse(vector);  // without the null slots at the end
        for (json& member : expected)
            while (member.is_array() && !member.empty() && member.back().is_null())
                member.erase(member.size() - 1);
        EXPECT_EQ(json::parse(written(*type, decoded.get())), expected);
        ++count;
    });
    EXPECT_GE(count, 65u * 3u);
}

TEST(json, of_random_values) {
    std::mt19937 random(7);
    for (const zr::record_type* type : all_records()) {
        for (int i = 0; i < 12; ++i) {
            structure original(*type);
            fill(*type, original.get(), random);
            for (json_layout layout : {json_layout::one_line, json_layout::indented}) {
                const std::string text = written(*type, original.get(), layout);
                structure copy(*type);
                zr::json::json_error error;
                ASSERT_TRUE(zr::json::read_json(text, *type, copy.get(), error))
                    << type->name << " " << error.path << ": " << error.message << "\n"
                    << text;
                ASSERT_EQ(difference(*type, original.get(), copy.get()), "") << text;
                for (char** member : texts_of(*type, copy.get()))
                    ASSERT_NE(*member, nullptr) << text;
                ASSERT_EQ(written(*type, copy.get(), layout), text);
                if (layout == json_layout::one_line) {
                    ASSERT_EQ(text.find_first_of("\n "), text.find(' '));
                }
            }
        }
    }
}

// Everything left out, in every record: empty, 0 or absent, and no text is null.
TEST(json, of_nothing) {
    for (const zr::record_type* type : all_records()) {
        if (std::strcmp(type->name, "uuid_t") == 0) continue;
        structure read(*type), empty(*type);
        zr::json::json_error error;
        ASSERT_TRUE(zr::json::read_json("{}", *type, read.get(), error));
        EXPECT_EQ(difference(*type, read.get(), empty.get()), "");
        for (char** member : texts_of(*type, read.get()))
            EXPECT_NE(*member, nullptr) << type->name;
    }
}

// What reaches a terminal is printable; it is read back as it was.
TEST(json, escapes_what_is_not_printable) {
    const struct {
        const char* text;
        const char* json;
    } rows[] = {
        {"plain \"quoted\" \\ /", R"("plain \"quoted\" \\ /")"},
        {"\b\f\n\r\t\x1B[31m\x7F", R"("\b\f\n\r\t\u001b[31m\u007f")"},
        {"gr\xC3\xBC\xC3\x9F", "\"gr\xC3\xBC\xC3\x9F\""},
        {"\xC2\x9B", R"("\u009b")"},                        // C1
        {"\xE2\x80\xAE\xE2\x81\xA6", R"("\u202e\u2066")"},  // bidirectional override, isolate
        {"\xF0\x9F\x98\x80", "\"\xF0\x9F\x98\x80\""},
        {"\xF3\xA0\x80\x81", R"("\udb40\udc01")"},  // tag
        {"\xFF", R"({"hex":"ff"})"},
        {"\xC0\x80", R"({"hex":"c080"})"},              // longer than needed
        {"\xED\xA0\x80", R"({"hex":"eda080"})"},        // surrogate
        {"\xF4\x90\x80\x80", R"({"hex":"f4908080"})"},  // above U+10FFFF
        {"a\xE2\x82", R"({"hex":"61e282"})"},           // cut
    };
    const zr::record_type& type = *zr::find_record("sec_id_t");
    for (const auto& row : rows) {
        structure original(type), copy(type);
        *texts_of(type, original.get()).front() = copy_text(row.text);
        const std::string text = written(type, original.get());
        EXPECT_EQ(text, "{\"uuid\":\"00000000-0000-0000-0000-000000000000\",\"name\":" + std::string(row.json) + "}");
        zr::json::json_error error;
        ASSERT_TRUE(zr::json::read_json(text, type, copy.get(), error)) << error.message;
        EXPECT_STREQ(*texts_of(type, copy.get()).front(), row.text);
    }
}

TEST(json, that_is_refused) {
    const char* const uuid = R"("6ba7b810-9dad-11d1-80b4-00c04fd430c8")";
    const std::string many = "[" + [] {
        std::string list = "{}";
        for (int i = 0; i < 65535; ++i)
            list += ",{}";
        return list;
    }() + "]";
    std::string nulls;
    for (int i = 0; i < 32; ++i)
        nulls += "null,";
    const struct {
        const char* record;
        std::string text;
        size_t line, column;
        const char* path;
        const char* message;  // a part
    } rows[] = {
        {"value_s_t", "", 1, 1, "", "not JSON"},
        {"value_s_t", "{\"type\": 1", 1, 10, "type", "not JSON"},
        {"value_s_t", "{} x", 1, 4, "", "not JSON"},
        {"value_s_t", std::string("{}\0", 3), 1, 3, "", "not JSON: found a zero octet"},
        {"value_s_t", "{\"str\": \"\xFF\"}", 1, 10, "str", "not JSON"},
        {"value_s_t", R"({"str": "\ud800"})", 1, 16, "str", "not JSON"},
        {"value_s_t", "[]", 1, 1, "", "found an array, expected an object (value_s_t)"},
        {"value_s_t", "null", 1, 1, "", "found null, expected an object"},
        {"value_s_t", "{\n  \"type\": 2147483648\n}", 2, 11, "type", "found 2147483648, which is out of range"},
        {"value_s_t", "{\"type\":-2147483649}", 1, 9, "type", "from -2147483648 to 2147483647"},
        {"value_s_t", "{\"type\":18446744073709551616}", 1, 9, "type", "found 18446744073709551616, which is out"},
        {"value_s_t", "{\"type\":18446744073709551615}", 1, 9, "type", "found 18446744073709551615, which is out"},
        {"value_s_t", "{\"type\":1.0}", 1, 9, "type",
         "found 1.0, which is written with a fraction, expected a whole number"},
        {"value_s_t", "{\"type\":1e2}", 1, 9, "type",
         "found 1e2, which is written with an exponent, expected a whole number"},
        {"value_s_t", "{\"type\":true}", 1, 9, "type", "found true, expected a whole number"},
        {"value_s_t", "{\"type\":\"1\"}", 1, 9, "type", "found a string, expected a whole number"},
        {"value_s_t", "{\"str\": null}", 1, 9, "str", "found null, expected a text"},
        {"value_s_t", R"({"str": "a\u0000b"})", 1, 9, "str", "found a zero character (\\u0000)"},
        {"value_s_t", R"({"str": {"hex": "6100"}})", 1, 17, "str", "found a zero octet"},
        {"value_s_t", R"({"str": {"hex": "6"}})", 1, 17, "str", "hexadecimal digits"},
        {"value_s_t", R"({"str": {"hex": 6}})", 1, 17, "str", "hexadecimal digits"},
        {"value_s_t", R"({"str": {"hexe": "61"}})", 1, 10, "str", "one member \"hex\""},
        {"value_s_t", R"({"str": {"hex": "61", "hex": "62"}})", 1, 23, "str", "one member \"hex\""},
        {"value_s_t", R"({"str": {}})", 1, 10, "str", "one member \"hex\""},
        {"value_s_t", R"({"data": "0"})", 1, 10, "data", "found \"0\", expected octets"},
        {"value_s_t", R"({"data": "0g"})", 1, 10, "data", "found \"0g\", expected octets"},
        {"value_s_t", R"({"length": 3})", 1, 2, "", "it follows from \"data\""},
        {"value_s_t", R"({"tpye": 3})", 1, 2, "", "did you mean \"type\"?"},
        {"value_s_t", R"({"type": 3, "type": 3})", 1, 13, "type", "a second time"},
        {"cert_request_in", R"({"version": 1})", 1, 2, "", "expected one of cert_request_in"},
        {"cert_request_in", R"({"body_length": 1})", 1, 2, "", "it follows from \"body\""},
        {"cert_request_in", R"({"body": 1})", 1, 10, "body",
         "expected octets as a string of hexadecimal digits or null"},
        {"attrlist_s_t", R"({"attrs": {}})", 1, 11, "attrs", "found an object, expected an array"},
        {"attrlist_s_t", R"({"attrs": [{}, null]})", 1, 16, "attrs[1]", "found null, expected an object (attr_s_t)"},
        {"attrlist_s_t", R"({"attrs": [{"values": [{}, {"é": 1}]}]})", 1, 29, "attrs[0].values[1]", "found a member"},
        {"attrlist_s_t", R"({"attrs": [[]]})", 1, 12, "attrs[0]", "found an array, expected an object"},
        {"uuid_t", "{}", 1, 1, "", "found an object, expected a UUID"},
        {"uuid_t", R"("6ba7b8109dad11d180b400c04fd430c8")", 1, 1, "", "expected a UUID"},
        {"uuid_t", R"("6ba7b810-9dad-11d1-80b4-00c04fd430cg")", 1, 1, "", "expected a UUID"},
        {"sec_id_t", R"({"uuid": 1})", 1, 10, "uuid", "found a number, expected a UUID"},
        {"yvprincipal_s_t", R"({"pa": 1})", 1, 8, "pa", "expected an object (sec_id_pa_t) or null"},
        {"sec_id_pa_t", "{\"ids\":" + many + "}", 1, 9 + 3 * 65535, "ids[65535]", "at most 65535 elements"},
        {"yvaction_group_s_t", R"({"actions": 1})", 1, 13, "actions", "expected an array of at most 32 elements"},
        {"yvaction_group_s_t", "{\"actions\":[" + nulls + "null]}", 1, 173, "actions[32]", "at most 32 elements"},
        {"acl_permset_s_t", R"({"perms": [1, 2147483648]})", 1, 15, "perms[1]", "out of range"},
        {"namevalue_s_t", "{\"values\": [\"a\", 1]}", 1, 18, "values[1]", "found a number, expected a text"},
        {"namevalue_s_t", std::string("{\"values\": [") + uuid + ", []]}", 1, 53, "values[1]", "found an array"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.record) + " " + row.text.substr(0, 200));
        structure read(*zr::find_record(row.record));
        zr::json::json_error error;
        EXPECT_FALSE(zr::json::read_json(row.text, read.type(), read.get(), error));
        EXPECT_EQ(error.line, row.line);
        EXPECT_EQ(error.column, row.column);
        EXPECT_EQ(error.path, row.path);
        EXPECT_NE(error.message.find(row.message), std::string::npos) << error.message;
    }
}

TEST(json, slots_are_as_many_as_there_are) {
    for (const zr::record_type* type : all_records()) {
        for (const zr::field& field : *type) {
            if (field.held != zr::holding::slots) continue;
            const auto text = [&](uint32_t nulls) {
                std::string list;
                for (uint32_t i = 0; i < nulls; ++i)
                    list += "null,";
                return "{\"" + std::string(field.name) + "\":[" + list + "{}]}";
            };
            structure last(*type), over(*type);
            zr::json::json_error error;
            ASSERT_TRUE(zr::json::read_json(text(field.size - 1), *type, last.get(), error)) << error.message;
            const json back = json::parse(written(*type, last.get()));
            EXPECT_EQ(back.at(field.name).size(), field.size);
            EXPECT_FALSE(zr::json::read_json(text(field.size), *type, over.get(), error));
            EXPECT_EQ(error.path, field.name + ("[" + std::to_string(field.size) + "]"));
            EXPECT_NE(error.message.find("at most 32 elements"), std::string::npos) << error.message;
        }
    }
}

}  // namespace
}  // namespace zr_test
