// zrasn/c.h, as a caller in any language meets it.
#include <gtest/gtest.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "asn1/status.h"
#include "support/hex.h"
#include "support/records.h"
#include "zrasn/json.h"

namespace zr_test {
namespace {

using json = nlohmann::json;

// A call's status, report and what it has made.
struct answer {
    int status = 0;
    zr::json_report report;
    std::string made;

    json document() const { return json::parse(made); }
};

using text_function = int(const zrasn_record*, const void*, size_t, const zrasn_options*, char**, size_t*,
                          zrasn_report*);

answer call(text_function* function, const zrasn_record* record, const std::string& octets,
            const zr::json_options& options = {}) {
    answer got;
    char* text = nullptr;
    size_t length = 1;
    got.status = function(record, octets.data(), octets.size(), &options, &text, &length, &got.report);
    EXPECT_EQ(got.status, got.report.status);
    EXPECT_EQ(text == nullptr, got.status != 0);
    EXPECT_EQ(length, text == nullptr ? 0 : std::strlen(text));
    if (text != nullptr) got.made = text;
    zrasn_free(text);
    return got;
}

answer from_json(const zrasn_record* record, const std::string& text, const zr::json_options& options = {}) {
    answer got;
    unsigned char* octets = nullptr;
    size_t size = 1;
    got.status = zrasn_from_json(record, text.data(), text.size(), &options, &octets, &size, &got.report);
    EXPECT_EQ(octets == nullptr, got.status != 0);
    if (octets != nullptr) got.made.assign(reinterpret_cast<char*>(octets), size);
    zrasn_free(octets);
    return got;
}

int identify(const zrasn_record*, const void* octets, size_t size, const zrasn_options* options, char** text,
             size_t* length, zrasn_report* report) {
    return zrasn_identify(octets, size, nullptr, 0, options, text, length, report);
}

std::string sample(const zrasn_record* record, uint64_t seed, int filled) {
    zr::json_text text;
    EXPECT_EQ(text.fill([&](char** made, size_t* length) { return zrasn_sample(record, seed, filled, made, length); }),
              0);
    return std::string(text.view());
}

std::string octets_of(const char* digits) {
    const std::vector<unsigned char> octets = bytes(digits);
    return {octets.begin(), octets.end()};
}

TEST(c_interface, takes_samples_of_every_record_there_and_back) {
    const zrasn_record* const list = zrasn_record_find("attrlist");
    size_t empty = 0;
    for (uint64_t seed = 1; seed != 30; ++seed)
        empty += sample(list, seed, 0) == R"({"attrs":[]})";
    EXPECT_GT(empty, 0u);
    zr::json_options shown, bare;
    shown.show_secrets = bare.bare = 1;
    for (size_t i = 0; i != zrasn_record_count(); ++i) {
        const zrasn_record* const record = zrasn_record_at(i);
        const std::string name = zrasn_record_name(record);
        ASSERT_EQ(zrasn_record_find(name.c_str()), record);
        ASSERT_EQ(zrasn_record_find(name.substr(0, name.rfind("_s_t")).c_str()), record);
        EXPECT_LE(sample(record, 0, 0).size(), sample(record, 0, 1).size());
        for (uint64_t seed = 0; seed != 12; ++seed) {
            const std::string text = sample(record, seed / 2, seed % 2);
            SCOPED_TRACE(testing::Message() << name << " " << text);
            const answer octets = from_json(record, text);
            ASSERT_EQ(octets.status, 0) << octets.report.path << ": " << octets.report.message;
            const answer back = call(zrasn_to_json, record, octets.made + "more", shown);
            ASSERT_EQ(back.status, 0);
            EXPECT_EQ(back.report.consumed, octets.made.size());
            EXPECT_EQ(from_json(record, back.made).made, octets.made);
            EXPECT_EQ(from_json(record, text, bare).made, octets.made.substr(4));
            EXPECT_EQ(call(zrasn_to_json, record, octets.made.substr(4), bare).report.consumed, octets.made.size() - 4);

            void* structure = nullptr;
            ASSERT_EQ(zrasn_decode(record, octets.made.data(), octets.made.size(), nullptr, &structure, nullptr), 0);
            unsigned char* again = nullptr;
            size_t size = 0;
            ASSERT_EQ(zrasn_encode(record, structure, nullptr, &again, &size, nullptr), 0);
            EXPECT_EQ(std::string(reinterpret_cast<char*>(again), size), octets.made);
            zrasn_free(again);
            zrasn_structure_free(record, structure);

            const json fitting = call(identify, nullptr, octets.made).document().at("fitting");
            EXPECT_NE(std::find(fitting.begin(), fitting.end(), name), fitting.end());
            EXPECT_EQ(call(zrasn_check, record, octets.made).document(), json::parse(R"({"count":0,"deviations":[]})"));
            const json tree = call(zrasn_walk, record, octets.made).document();
            EXPECT_EQ(tree.at("problems"), 0);
            EXPECT_EQ(tree.at("elements").at(0).at("record"), name);
        }
        EXPECT_EQ(sample(record, 5, 1), sample(record, 5, 1));
        EXPECT_NE(sample(record, 0, 0), sample(record, 0, 1));
    }
    EXPECT_EQ(zrasn_record_at(zrasn_record_count()), nullptr);
    EXPECT_EQ(zrasn_record_find("asn_uuid_t"), zrasn_record_find("uuid"));
    EXPECT_EQ(zrasn_record_find(std::string(100000, 'x').c_str()), nullptr);
    EXPECT_EQ(zrasn_record_find(nullptr), nullptr);
}

TEST(c_interface, says_why_octets_are_refused) {
    const struct {
        text_function* function;
        const char* octets;
        void (*ask)(zrasn_options& options);
        int status;
        const char* reason;
        size_t offset;
        int found, tag;
        size_t missing;
        const char *path, *message;
    } rows[] = {
        // clang-format off
        {zrasn_to_json, "", nullptr, zr_err_bad_envelope, "truncated", 0, -1, -1, 6, "", "found no octets, expected the envelope header"},
        {zrasn_to_json, "30 00", nullptr, zr_err_bad_envelope, "truncated", 0, 0x30, -1, 46, "", "found a SEQUENCE (30), expected the envelope's header"},
        {zrasn_to_json, "04 03 ac dc 30 00", nullptr, zr_err_bad_envelope, "bad_envelope", 1, 3, -1, 0, "", "found version 3, expected version 2"},
        {zrasn_to_json, "04 02 ac dc 30 05 02 01 01", nullptr, zr_err_data_ends_early, "truncated", 4, 0x30, 16, 2, "", "found a SEQUENCE (30) that is longer than"},
        {zrasn_to_json, "04 02 ac dc 30 06 0c 01 61 02 01 05", nullptr, zr_err_no_match, "no_match", 6, 0x0c, 16, 0, "attrs", "found a UTF8String (0c), expected a SEQUENCE (30)"},
        {zrasn_to_json, "30 03 0c 01 61", [](zrasn_options& o) { o.bare = 1; }, zr_err_no_match, "no_match", 2, 0x0c, 16, 0, "attrs", "found a UTF8String (0c)"},
        {zrasn_check, "30 03 0c 01 61", nullptr, zr_err_no_match, "no_match", 2, 0x0c, 16, 0, "attrs", "found a UTF8String (0c)"},
        {zrasn_to_json, "04 02 ac dc 30 03 30 81 00", [](zrasn_options& o) { o.strict = 1; }, zr_err_bad_contents, "not_canonical", 6, 0x30, -1, 0, "attrs", "expected the form that the library writes"},
        {zrasn_to_json, "04 02 ac dc 30 02 30 00", [](zrasn_options& o) { o.most_octets = 7; }, zr_err_out_of_memory, "limit_octets", 0, -1, -1, 0, "", "more octets than the limit"},
        {zrasn_to_json, "30 02 30 00", [](zrasn_options& o) { o.bare = 1; o.most_octets = 3; }, zr_err_out_of_memory, "limit_octets", 0, -1, -1, 0, "", ""},
        {zrasn_to_json, "04 02 ac dc 30 02 30 00", [](zrasn_options& o) { o.most_text = 11; }, zr_err_out_of_memory, "limit_text", 0, -1, -1, 0, "", "the text that is made"},
        {zrasn_to_json, "04 00 ac dc 30 00", [](zrasn_options& o) { o.version = 256; }, zr_err_data_ends_early, "data_ends_early", 6, -1, 16, 0, "attrs", "found the end of the data"},
        {identify, "41 42 43 44 45", nullptr, zr_err_bad_envelope, "bad_envelope", 0, 0x41, -1, 0, "", "expected the envelope header"},
        {identify, "04 02 ac dc 05 00", nullptr, zr_err_no_match, "no_match", 4, 5, 16, 0, "", "found a NULL (05)"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        zr::json_options options;
        if (row.ask != nullptr) row.ask(options);
        const answer got = call(row.function, zrasn_record_find("attrlist"), octets_of(row.octets), options);
        EXPECT_EQ(got.status, row.status);
        EXPECT_STREQ(got.report.name, zrasn_status_name(row.status));
        EXPECT_STREQ(got.report.reason, row.reason);
        EXPECT_EQ(got.report.offset, row.offset);
        EXPECT_EQ(got.report.found, row.found);
        EXPECT_EQ(got.report.expected_tag, row.tag);
        EXPECT_EQ(got.report.missing, row.missing);
        EXPECT_EQ(got.report.line, 0u);
        EXPECT_STREQ(got.report.path, row.path);
        EXPECT_NE(std::string(got.report.message).find(row.message), std::string::npos) << got.report.message;
    }
}

TEST(c_interface, says_why_json_is_refused) {
    const std::string list = R"({"attrs":[{"name":"a"},{"name":"bc"}]})";
    const struct {
        std::string text;
        void (*ask)(zrasn_options& options);
        int status;
        const char* reason;
        size_t line, column;
        const char *path, *message;
    } rows[] = {
        // clang-format off
        {"{\n \"attr\": []}", nullptr, ZRASN_BAD_JSON, "bad_json", 2, 2, "", "did you mean \"attrs\"?"},
        {"{} x", nullptr, ZRASN_BAD_JSON, "bad_json", 1, 4, "", "not JSON"},
        {list, [](zrasn_options& o) { o.most_elements = 1; }, zr_err_out_of_memory, "limit_elements", 1, 24, "attrs[1]", "more elements than the limit"},
        {R"({"attrs":[{"name":")" + std::string(200, 'x') + "\"}]}", [](zrasn_options& o) { o.most_heap = 200; }, zr_err_out_of_memory, "limit_heap", 1, 19, "attrs[0].name", "more octets in blocks"},
        {list, [](zrasn_options& o) { o.most_depth = 1; }, zr_err_out_of_memory, "limit_depth", 1, 11, "attrs[0]", "enclose each other"},
        {list, [](zrasn_options& o) { o.most_octets = 37; }, zr_err_out_of_memory, "limit_octets", 0, 0, "", "longer than the limit"},
        {list, [](zrasn_options& o) { o.most_elements = o.most_depth = 2; o.most_octets = 38; o.most_heap = 200; }, 0, "ok", 0, 0, "", ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        zr::json_options options;
        if (row.ask != nullptr) row.ask(options);
        const answer got = from_json(zrasn_record_find("attrlist"), row.text, options);
        SCOPED_TRACE(row.text + got.report.message);
        EXPECT_EQ(got.status, row.status);
        EXPECT_STREQ(got.report.reason, row.reason);
        EXPECT_EQ(got.report.line, row.line);
        EXPECT_EQ(got.report.column, row.column);
        EXPECT_STREQ(got.report.path, row.path);
        EXPECT_NE(std::string(got.report.message).find(row.message), std::string::npos);
    }
}

// In every record that has secrets: shown by nothing unless asked for, and never taken for a value.
TEST(c_interface, keeps_secrets) {
    size_t count = 0;
    for (const zr::record_type* type : all_records()) {
        const zrasn_record* const record = zr::as_c(*type);
        if (zrasn_record_has_secrets(record) == 0) continue;
        for (const zr::field& field : *type) {
            if (!field.secret) continue;
            ++count;
            const bool text = field.value != zr::value_kind::octets;
            const auto document = [&](const std::string& value) {
                return "{\"" + std::string(field.name) + "\":\"" + value + "\"}";
            };
            const std::string value = text ? "hunter2" : "68756e746572";
            const std::string octets = from_json(record, document(value)).made;
            const std::string hidden = call(zrasn_to_json, record, octets).made;
            EXPECT_NE(hidden.find(document("***").substr(1, std::strlen(field.name) + 8)), std::string::npos) << hidden;
            EXPECT_EQ(call(zrasn_walk, record, octets).made.find(value), std::string::npos);
            const answer redacted = from_json(record, hidden);
            EXPECT_EQ(redacted.status, ZRASN_BAD_JSON);
            EXPECT_STREQ(redacted.report.reason, "hidden_secret");
            zr::json_options shown;
            shown.show_secrets = 1;
            EXPECT_NE(call(zrasn_to_json, record, octets, shown).made.find(value), std::string::npos);
            EXPECT_NE(call(zrasn_walk, record, octets, shown).made.find(value), std::string::npos);
            for (const std::string& bad : {document(value + "\\u0000"), document(value) + "x", document(value + "\n"),
                                           "{\"" + std::string(field.name) + "\":[\"" + value + "\"]}"}) {
                const answer refused = from_json(record, bad);
                EXPECT_EQ(refused.status, ZRASN_BAD_JSON) << bad;
                EXPECT_EQ(std::string(refused.report.message).find("unter"), std::string::npos)
                    << refused.report.message;
                EXPECT_EQ(std::string(refused.report.message).find("6e746"), std::string::npos)
                    << refused.report.message;
            }
        }
    }
    EXPECT_GE(count, 2u);
}

TEST(c_interface, shows_what_hostile_octets_are_within_its_limits) {
    const std::string deep = [] {
        std::string octets;
        for (int i = 0; i != 100000; ++i)
            octets += "\x30\x80";
        return octets;
    }();
    zr::json_options few;
    few.most_text = 1000;
    for (const zr::json_options& options : {zr::json_options(), few}) {
        const answer got = call(zrasn_walk, zrasn_record_find("attrlist"), deep, options);
        EXPECT_LT(got.made.size(), 64u * 300);
        EXPECT_EQ(got.document().at("problems"), 100002);  // each end, a member that is none, the record's end
    }
    few.most_text = 0;
    few.most_depth = 1;
    EXPECT_EQ(call(zrasn_walk, nullptr, octets_of("04 02 ac dc 30 05 02 01 81 05 00"), few).document(),
              json::parse(R"({"envelope":{"offset":0,"header":4,"version":2},"problems":0,"elements":[
                  {"offset":4,"header":2,"length":5,"tag":16,"constructed":true,"type":"SEQUENCE","children":[],"hidden":2}]})"));
    // Each text of an attribute list ends in a zero octet.
    std::string texts;
    for (int i = 0; i != 20; ++i)
        texts += octets_of("30 05 0c 01 00 30 00");
    few.most_text = 1000;
    few.most_depth = 0;
    const answer got = call(zrasn_check, zrasn_record_find("attrlist"), octets_of("30 81 8f 30 81 8c") + texts, few);
    EXPECT_EQ(got.document().at("count"), 20);
    EXPECT_EQ(got.document().at("deviations").size() + got.document().at("hidden").get<size_t>(), 20u);
    EXPECT_EQ(
        got.document().at("deviations").at(0),
        json::parse(
            R"({"key":"cut_text","offset":10,"path":"attrs[0].name","what":"a zero octet in a text, which is read up to there"})"));
    EXPECT_EQ(call(identify, nullptr, octets_of("30 06 30 04 30 02 05 00")).document().at("fitting"), json::array());
    // What is left out, and how many levels are shown when nobody says so.
    const json lacking = call(zrasn_walk, zrasn_record_find("value_s_t"), octets_of("30 03 02 01 05")).document();
    EXPECT_EQ(lacking.at("elements").at(0).at("missing"), json::parse(R"(["str","data"])"));
    std::string nested;
    for (int i = 0; i != 70; ++i)
        nested.insert(0, {'\x30', '\x82', char(nested.size() >> 8), char(nested.size() & 255)});
    EXPECT_NE(call(zrasn_walk, nullptr, nested).made.find("\"hidden\":6"), std::string::npos);
}

TEST(c_interface, describes_records) {
    zr::json_text all, one, module, schema;
    const zrasn_record* const record = zrasn_record_find("uuid");
    EXPECT_EQ(all.fill([&](char** made, size_t* length) { return zrasn_describe(nullptr, made, length); }), 0);
    EXPECT_EQ(json::parse(all.view()).size(), zrasn_record_count());
    EXPECT_EQ(one.fill([&](char** made, size_t* length) { return zrasn_describe(record, made, length); }), 0);
    EXPECT_EQ(json::parse(one.view()).at("binding"), zrasn_record_binding(record));
    EXPECT_EQ(json::parse(one.view()).at("module"), zrasn_record_module(record));
    EXPECT_EQ(zrasn_record_size(record), 16u);
    EXPECT_EQ(module.fill([&](char** made, size_t* length) { return zrasn_schema(record, made, length); }), 0);
    EXPECT_NE(module.view().find("Uuid-t ::= SEQUENCE {"), std::string::npos);
    EXPECT_EQ(schema.fill([&](char** made, size_t* length) { return zrasn_json_schema(nullptr, made, length); }), 0);
    const json all_records = json::parse(schema.view());
    EXPECT_EQ(all_records.at("anyOf").size(), zrasn_record_count());
    EXPECT_EQ(all_records.at("$defs").at("attrlist_s_t").at("properties").at("attrs").at("type"), "array");
    EXPECT_NE(std::string(zrasn_version()).find('.'), std::string::npos);
    EXPECT_STREQ(zrasn_status_text(ZRASN_BAD_JSON), "the text is no JSON of the record");
    EXPECT_STREQ(zrasn_status_name(zr_err_no_match), "zr_err_no_match");
}

// What makes no sense is refused before anything is read; what a later version adds may be there, as long as it is 0.
TEST(c_interface, refuses_arguments_that_are_none) {
    const zrasn_record* const record = zrasn_record_find("uuid");
    char* text = nullptr;
    size_t length = 0;
    void* structure = nullptr;
    zrasn_report report = ZRASN_REPORT_INIT;
    EXPECT_EQ(zrasn_to_json(nullptr, "", 0, nullptr, &text, &length, &report), zr_err_bad_argument);
    EXPECT_STREQ(report.name, "zr_err_bad_argument");
    EXPECT_EQ(zrasn_to_json(record, nullptr, 1, nullptr, &text, &length, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_to_json(record, nullptr, 0, nullptr, &text, &length, nullptr), zr_err_bad_envelope);
    EXPECT_EQ(zrasn_to_json(record, "", 0, nullptr, nullptr, &length, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_from_json(record, "{}", 2, nullptr, nullptr, &length, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_structure_to_json(record, nullptr, nullptr, &text, &length, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_json_to_structure(record, "{}", 2, nullptr, nullptr, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_json_to_structure(record, "{}", 2, nullptr, &structure, nullptr), ZRASN_BAD_JSON);
    EXPECT_EQ(structure, nullptr);
    EXPECT_EQ(zrasn_identify("", 0, &record, 0, nullptr, &text, &length, nullptr), zr_err_bad_argument);
    EXPECT_EQ(zrasn_sample(nullptr, 0, 0, &text, &length), zr_err_bad_argument);
    zrasn_structure_free(record, nullptr);

    struct {
        zrasn_options options;
        int added[2];
    } later = {ZRASN_OPTIONS_INIT, {0, 0}};
    const char nothing[] = "\"00000000-0000-0000-0000-000000000000\"";
    const struct {
        size_t options, report;
        int added, status;
    } rows[] = {
        {sizeof(zrasn_options), sizeof(zrasn_report), 0, 0},
        {sizeof(zrasn_options) - 1, sizeof(zrasn_report), 0, zr_err_bad_argument},
        {sizeof(zrasn_options), sizeof(zrasn_report) - 1, 0, zr_err_bad_argument},
        {0, sizeof(zrasn_report), 0, zr_err_bad_argument},
        {SIZE_MAX, sizeof(zrasn_report), 0, zr_err_bad_argument},
        {sizeof(zrasn_options), SIZE_MAX, 0, zr_err_bad_argument},
        {sizeof later, sizeof(zrasn_report), 0, 0},
        {sizeof later, sizeof(zrasn_report), 1, zr_err_bad_argument},
    };
    for (const auto& row : rows) {
        later.options.size = row.options;
        later.added[1] = row.added;
        report.size = row.report;
        EXPECT_EQ(zrasn_json_to_structure(record, nothing, sizeof nothing - 1, &later.options, &structure, &report),
                  row.status);
        zrasn_structure_free(record, structure);
    }
}

}  // namespace
}  // namespace zr_test
