// Statuses in words and as std::error_code, and the message sink.
#include "zrasn/error.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/caught_stderr.h"

namespace zr_test {
namespace {

TEST(error, each_status_has_a_key_and_a_code) {
    std::set<std::string> keys;
    for (const zr::status_row& row : zr::statuses()) {
        const std::error_code code = zr::error_code(row.status);
        EXPECT_TRUE(keys.insert(zr::status_key(row.status)).second) << row.name;
        EXPECT_EQ(std::string(row.status == 0 ? "zr_" : "zr_err_") + zr::status_key(row.status), row.name);
        EXPECT_EQ(code.message(), row.text);
        EXPECT_EQ(static_cast<bool>(code), row.status != 0);
        // A status is of one sort at most.
        int sorts = 0;
        for (std::errc sort : {std::errc::not_enough_memory, std::errc::not_supported, std::errc::invalid_argument,
                               std::errc::illegal_byte_sequence, std::errc::bad_message})
            sorts += code == sort ? 1 : 0;
        EXPECT_EQ(sorts != 0 ? sorts : 1, 1) << row.name;
    }
    EXPECT_STREQ(zr::status_key(-1), "unknown");
    EXPECT_STREQ(zr::status_category().name(), "zrasn");
    std::error_code code = zr_err_no_match;
    EXPECT_TRUE(code == zr_err_no_match && code == std::errc::bad_message && code != std::errc::invalid_argument);
    EXPECT_TRUE(zr::error_code(zr_err_out_of_memory) == std::errc::not_enough_memory);
}

unsigned sunk = 0;

TEST(error, the_sink_takes_the_line) {
    caught_stderr printed;
    const auto fail = [] { EXPECT_EQ(zr::report_exception({"file", 7, "text", 0x1234}), 0x1234); };
    const zr::message_sink mine = [](const zr_asn_exception& exception) { sunk += exception.code; };
    EXPECT_EQ(zr::set_message_sink(mine), zr::print_exception);
    fail();
    EXPECT_EQ(printed.take(), "");
    EXPECT_EQ(sunk, 0x1234u);
    EXPECT_EQ(zr::set_message_sink(nullptr), mine);
    fail();
    EXPECT_EQ(printed.take(), "Exception: text [00001234] in file at line 7\n");
    EXPECT_EQ(zr::set_message_sink(zr::print_exception), zr::print_exception);
    EXPECT_EQ(sunk, 0x1234u);
}

}  // namespace
}  // namespace zr_test
