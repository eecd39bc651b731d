// Golden vectors: what an encoder that knows nothing of the library makes of the same values (vectors/README.md).
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "json/document/record_reader.h"
#include "support/routes.h"
#include "support/vectors.h"

namespace zr_test {
namespace {

// One value, on both ways.
void check(const zr::record_type& type, const std::string& value, const octets& ber) {
    structure original(type);
    zr::json::json_error error;
    ASSERT_TRUE(zr::json::read_json(value, type, original.get(), error)) << error.path << ": " << error.message;
    for (const route& way : routes) {
        SCOPED_TRACE(way.name);
        EXPECT_EQ(hex(encode(way, original).ber), hex(ber));
        structure copy(type);
        ASSERT_EQ(decode(way, ber, copy), 0);
        EXPECT_EQ(difference(type, original.get(), copy.get()), "");
    }
}

TEST(vectors, of_every_record) {
    std::map<std::string, int> counts;
    each_vector([&](const std::string& name, const std::string& text, const octets& ber) {
        SCOPED_TRACE(testing::Message() << name << " " << text);
        ++counts[name];
        const zr::record_type* type = zr::find_record(name);
        ASSERT_NE(type, nullptr);
        check(*type, text, ber);
    });
    // A record that was added may have none yet.
    EXPECT_GE(std::count_if(counts.begin(), counts.end(), [](const auto& record) { return record.second >= 3; }), 65);
}

}  // namespace
}  // namespace zr_test
