// JSON as events with their places, and a place shown.
#include <gtest/gtest.h>

#include "json/document/events.h"

namespace zr_test {
namespace {

using namespace zr::json;

// Each event as "offset kind text"; it stops behind `most`.
struct recorder final : json_events {
    bool on(const json_event& event) override {
        static constexpr const char* kinds[] = {"null", "bool", "number", "string", "{", "key", "}", "[", "]"};
        const char* kind = kinds[static_cast<size_t>(event.kind)];
        all += std::to_string(event.offset) + " " + kind;
        if (std::string(kind) != event.text && event.kind != json_kind::null) all += " " + std::string(event.text);
        all += "; ";
        return --most != 0;
    }
    std::string all;
    int most = -1;
};

TEST(parse, events_and_their_places) {
    const struct {
        std::string text;
        const char* events;
        int most = -1;
    } rows[] = {
        {"{}", "0 {; 1 }; "},
        {" [ ] ", "1 [; 3 ]; "},
        {R"({"a":1,"b":[-2.5e+3,true,null]})",
         "0 {; 1 key a; 5 number 1; 7 key b; 11 [; 12 number -2.5e+3; 20 bool true; 25 null; 29 ]; 30 }; "},
        {"[1 ,2\n, 3]", "0 [; 1 number 1; 4 number 2; 8 number 3; 9 ]; "},
        {R"(["\"","\\","a\\\"b","\u00e9",""])",
         "0 [; 1 string \"; 6 string \\; 11 string a\\\"b; 20 string \u00E9; 29 string ; 31 ]; "},
        {"\xEF\xBB\xBF\"x\"", "3 string x; "},
        {"[18446744073709551616,-0]", "0 [; 1 number 18446744073709551616; 22 number -0; 24 ]; "},
        {"[1,2]", "0 [; 1 number 1; ", 2},
        {"[1,}", "0 [; 1 number 1; !3"},
        {"[1", "0 [; 1 number 1; !1"},
        {"", "!0"},
        {"1 2", "0 number 1; !2"},
        {std::string("[]\0x", 4), "0 [; 1 ]; !2"},
        {std::string("[\0]", 3), "0 [; !1"},
        {"[1e999]", "0 [; !5"},
        {"[0e999,1]", "0 [; 1 number 0e999; ", 2},
        {"[12-07]", "0 [; 1 number 12-07; ", 2},
        {"[" + std::string(400, '9') + "]", "0 [; !400"},
        {"[\"\\udc00\"]", "0 [; !7"},
        {"[\"plain text, then an escape: \\u00fc\\n!\"]",
         "0 [; 1 string plain text, then an escape: \u00FC\n!; 40 ]; "},
        {"\n                \t[\r\n         1\xFF", "18 [; 30 number 1; !31"},
        {"\"\xC0\x80\"", "!1"},
    };
    for (const auto& row : rows) {
        recorder events;
        events.most = row.most;
        json_fault fault;
        const bool good = parse_json(row.text, events, fault);
        if (!fault.message.empty()) events.all += "!" + std::to_string(fault.offset);
        EXPECT_EQ(events.all, row.events) << row.text;
        EXPECT_EQ(good, fault.message.empty() && row.most < 0) << row.text;
        EXPECT_TRUE(fault.message.empty() || fault.message.substr(0, 10) == "not JSON: ") << fault.message;
    }
}

}  // namespace
}  // namespace zr_test
