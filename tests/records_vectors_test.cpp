// Golden vectors: what an encoder that knows nothing of the library makes of the same values (vectors/README.md).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "support/hex.h"
#include "support/records_json.h"
#include "support/routes.h"

namespace zr_test {
namespace {

using nlohmann::json;

// One value, on both ways.
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
            const zr::record_type* type = zr::find_record(name);
            ASSERT_NE(type, nullptr);
            check(*type, json::parse(text), ber);
        }
    }
    // A record that was added may have none yet.
    EXPECT_GE(std::count_if(counts.begin(), counts.end(), [](const auto& record) { return record.second >= 3; }), 65);
}

}  // namespace
}  // namespace zr_test
