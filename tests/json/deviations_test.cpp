// Where accepted encodings differ from the library's.
#include <gtest/gtest.h>

#include <algorithm>

#include "json/ber/deviations.h"
#include "support/hex.h"
#include "support/routes.h"

namespace zr_test {
namespace {

// Each as "offset path: what", offsets without the header.
std::vector<std::string> deviations(const zr::record_type& type, const octets& ber) {
    structure decoded(type);
    EXPECT_EQ(decode(entry_points, ber, decoded), 0) << hex(ber);
    std::vector<std::string> all;
    zr::json::find_deviations(ber.data(), ber.size(), 0, type, decoded.get(), [&](const zr::json::deviation& found) {
        all.push_back(std::to_string(found.offset) + " " + found.path + ": " + found.what);
    });
    return all;
}

TEST(deviations, are_found_where_they_are) {
    const struct {
        const char* record;
        const char* ber;
        std::vector<std::string> found;
    } rows[] = {
        {"value_s_t", "30 07 02 01 05 0c 00 04 00", {}},
        {"value_s_t", "30 81 07 02 01 05 0c 00 04 00", {"1 : a length of 2 octets, 1 would do"}},
        {"value_s_t", "30 80 02 01 05 0c 00 04 00 00 00", {"1 : an indefinite length"}},
        {"value_s_t", "30 0b 02 01 05 0c 84 00 00 00 00 04 00", {"6 str: a length of 5 octets, 1 would do"}},
        {"value_s_t", "30 07 02 01 05 0c 00 04 00 05 00", {"9 : 2 octets after the record"}},
        {"value_s_t", "30 09 02 01 05 2c 02 04 00 04 00", {"5 str: a string in segments"}},
        {"value_s_t",
         "30 0d 02 01 05 0c 00 24 80 04 02 61 62 00 00",
         {"8 data: an indefinite length", "7 data: a string in segments"}},
        {"value_s_t", "30 08 02 01 05 0c 01 00 04 00", {"7 str: a zero octet in a text, which is read up to there"}},
        {"value_s_t", "30 0a 02 01 05 0c 03 61 c3 28 04 00", {"8 str: a text that is not UTF-8"}},
        {"value_s_t", "30 0d 02 01 05 2c 06 04 01 c3 04 01 a9 04 00", {"5 str: a string in segments"}},
        {"value_s_t",
         "30 0f 02 01 05 2c 80 04 01 c3 04 01 28 00 00 04 00",
         {"6 str: an indefinite length", "5 str: a string in segments", "5 str: a text that is not UTF-8"}},
        {"namevalue_s_t", "30 0d 0c 00 30 07 0c 01 ff 0c 02 c3 a9 30 00", {"8 values[0]: a text that is not UTF-8"}},
        {"value_s_t", "30 06 02 00 0c 00 04 00", {"4 type: no octets, read as 0 and written as 00"}},
        {"value_s_t", "30 08 02 02 00 05 0c 00 04 00", {"4 type: the octets 0005, read as 5 and written as 05"}},
        {"value_s_t", "30 08 02 02 ff 85 0c 00 04 00", {"4 type: the octets ff85, read as -123 and written as 85"}},
        {"value_s_t", "30 08 02 02 00 85 0c 00 04 00", {}},
        {"dbr_get_db_in_s_t",
         "30 07 02 05 00 ff ff ff ff",
         {"4 int_a: the octets 00ffffffff, read as -1 and written as ff"}},
        {"acl_permset_s_t",
         "30 0a 30 08 02 02 00 7f 02 02 00 80",
         {"6 perms[0]: the octets 007f, read as 127 and written as 7f"}},
        {"uuid_t",
         "30 17 02 01 00 02 03 01 00 01 02 01 00 02 01 00 02 01 00 04 04 01 02 03 04",
         {"7 time_mid: the octets 010001, read as 1 and written as 01",
          "19 node: 4 octets where 6 are written; the rest is zero"}},
        {"yvaction_groups_s_t", "30 08 30 02 05 00 30 02 30 00", {"4 groups[0]: empty slots behind the last used one"}},
        {"cert_request_in", "30 0a 02 01 01 04 02 61 00 04 01 00", {}},
        {"cert_request_in",
         "30 0b 02 02 00 07 04 02 61 00 04 01 00",
         {"4 version: the octets 0007 as version, which is written as 01"}},
        {"cert_request_in",
         "30 0d 02 01 01 04 03 61 00 00 04 01 41 04 00",
         {"8 str_a: a zero octet in a text, which is read up to there",
          "12 str_b: a text of one octet, which is read as empty", "13 body: an empty value, which is read as absent"}},
        {"cert_request_in",
         "30 0a 02 01 01 04 03 61 c3 28 04 00",
         {"7 str_a: a text without the zero octet that is written behind it", "8 str_a: a text that is not UTF-8",
          "12 str_b: a text without the zero octet that is written behind it"}},
        {"cert_request_in",
         "30 11 02 01 01 24 09 04 02 61 00 04 03 62 00 00 04 01 00",
         {"5 str_a: a string in segments", "10 str_a: a zero octet in a text, which is read up to there"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(deviations(*zr::find_record(row.record), bytes(row.ber)), row.found) << row.record << " " << row.ber;
    }
}

// None in what the library writes, but for its texts that are not UTF-8; of other forms of the same value each is
// named.
TEST(deviations, of_random_encodings) {
    std::mt19937 random(8);
    for (const zr::record_type* type : all_records()) {
        for (int i = 0; i < 10; ++i) {
            structure original(*type);
            fill(*type, original.get(), random, {400, 4, false});
            const octets ber = encode(entry_points, original).ber;
            for (const std::string& line : deviations(*type, ber))
                ASSERT_NE(line.find("not UTF-8"), line.npos) << type->name << " " << line << " " << hex(ber);
            const octets other = rewrite_ber(parse_ber(ber), random);
            const std::vector<std::string> found = deviations(*type, other);
            const auto is_form = [](const std::string& line) { return line.find("not UTF-8") == line.npos; };
            ASSERT_EQ(std::any_of(found.begin(), found.end(), is_form), other != ber) << type->name << hex(other);
            for (const std::string& line : found)
                ASSERT_EQ(line.find("other octets"), line.npos) << type->name << " " << line << " " << hex(other);
        }
    }
}

}  // namespace
}  // namespace zr_test
