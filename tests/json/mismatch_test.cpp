// Where an encoding stops being a record's: the walk agrees with the decode.
#include <gtest/gtest.h>

#include "asn1/status.h"
#include "json/ber/mismatch.h"
#include "support/hex.h"
#include "support/routes.h"

namespace zr_test {
namespace {

// Every record, whole and with an octet changed, cut or added at random: refused by both or by neither, with the same
// status.
TEST(mismatch, agrees_with_the_decode) {
    std::mt19937 random(11);
    size_t refused = 0;
    for (const zr::record_type* type : all_records()) {
        for (int i = 0; i < 200; ++i) {
            structure original(*type);
            fill(*type, original.get(), random, {300, 4, false});
            octets ber = encode(entry_points, original).ber;
            if (random() % 2 == 0) ber = rewrite_ber(parse_ber(ber), random, {true, true, true, random() % 4 == 0});
            const size_t at = random() % ber.size();
            switch (i % 4) {
                case 0:
                    break;
                case 1:
                    ber[at] = static_cast<unsigned char>(random());
                    break;
                case 2:
                    ber.resize(at + 1);
                    break;
                default:
                    ber[at] ^= static_cast<unsigned char>(1u << random() % 8);
                    break;
            }
            structure copy(*type);
            const int status = decode(entry_points, ber, copy);
            SCOPED_TRACE(std::string(type->name) + " " + hex(ber));
            zr::json::mismatch found;
            ASSERT_EQ(zr::json::find_mismatch(ber.data(), ber.size(), *type, found), status != 0);
            if (status == 0) continue;
            ++refused;
            ASSERT_EQ(found.status, status);
            ASSERT_LE(found.offset, ber.size());
            ASSERT_NE(found.found, "");
            ASSERT_NE(found.expected, "");
        }
    }
    EXPECT_GT(refused, 1000u);
}

TEST(mismatch, names_the_place) {
    const struct {
        const char* record;
        const char* ber;
        size_t offset;
        int status;
        const char* path;
        const char* found;
        const char* expected;
    } rows[] = {
        {"attrlist_s_t", "", 0, zr_err_data_ends_early, "", "the end of the data", "a SEQUENCE (30)"},
        {"attrlist_s_t", "31 02 30 00", 0, zr_err_no_match, "", "a SET (31)", "a SEQUENCE (30)"},
        {"attrlist_s_t", "30 03 30 00", 0, zr_err_data_ends_early, "",
         "a SEQUENCE (30) that is longer than the 4 octets "
         "left here",
         "one that ends within them"},
        {"attrlist_s_t", "30 04 30 00 05 00", 4, zr_err_trailing_data, "", "2 octets more: a NULL (05)",
         "the end of the SEQUENCE"},
        {"attrlist_s_t", "30 80 30 00 05 00", 4, zr_err_bad_contents, "", "a NULL (05)",
         "end-of-contents octets (00 00)"},
        {"attrlist_s_t", "30 06 30 04 30 02 0c 00", 8, zr_err_data_ends_early, "attrs[0].values", "the end of the data",
         "a SEQUENCE (30)"},
        {"attrlist_s_t", "30 0d 30 0b 30 09 0c 00 30 05 30 03 04 01 00", 12, zr_err_no_match, "attrs[0].values[0].type",
         "an OCTET STRING (04)", "an INTEGER (02)"},
        {"attrlist_s_t", "30 0a 30 08 30 04 0c 00 30 00 a1 00", 10, zr_err_no_match, "attrs[1]",
         "an element with a context-specific tag (a1)", "a SEQUENCE (30)"},
        {"value_s_t", "30 03 22 01 00", 2, zr_err_constructed_form, "type", "a constructed form of an INTEGER (22)",
         "an INTEGER (02) in the primitive form"},
        {"value_s_t", "10 00", 0, zr_err_primitive_form, "", "a SEQUENCE (10) in the primitive form",
         "a SEQUENCE (30)"},
        {"value_s_t", "30 04 02 80 00 00", 2, zr_err_indefinite_length, "type", "an INTEGER (02) of indefinite length",
         "a definite length"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.ber);
        const octets ber = bytes(row.ber);
        zr::json::mismatch found;
        ASSERT_TRUE(zr::json::find_mismatch(ber.data(), ber.size(), *zr::find_record(row.record), found));
        EXPECT_EQ(found.offset, row.offset);
        EXPECT_EQ(found.status, row.status);
        EXPECT_EQ(found.path, row.path);
        EXPECT_EQ(found.found, row.found);
        EXPECT_EQ(found.expected, row.expected);
    }
}

}  // namespace
}  // namespace zr_test
