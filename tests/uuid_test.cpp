// What the UUID makes of encodings that another writer may send: by the entry points and by the binding object alike.
#include <gtest/gtest.h>

#include <cstring>

#include "asn1/asnbase/status.h"
#include "base_idls/zrnbase_asn.h"
#include "support/hex.h"

namespace {

using zr_test::bytes;
using zr_test::hex;

const uuid_t untouched = {0xA5A5A5A5, 0xA5A5, 0xA5A5, 0xA5, 0xA5, {0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5}};

bool equal(const uuid_t& a, const uuid_t& b) {
    static_assert(sizeof(uuid_t) == 16);  // no padding
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::vector<unsigned char> enveloped(const std::string& octets) { return bytes("04 02 ac dc " + octets); }

TEST(uuid, other_encodings) {
    static const char* const start = "02 01 01 02 01 02 02 01 03 02 01 04 02 01 05 ";
    // clang-format off
    static const struct {
        const char* octets;  // of the SEQUENCE; "@" stands for the five numbers above
        int status;
        uuid_t value;
    } table[] = {
        {"30 80 @ 04 06 01 02 03 04 05 06 00 00", 0, {1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6}}},
        {"30 81 17 @ 04 06 01 02 03 04 05 06", 0, {1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6}}},
        {"30 80 @ 24 80 04 02 01 02 24 06 04 04 03 04 05 06 00 00 00 00", 0, {1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6}}},
        // Six octets of the node, whatever is sent.
        {"30 14 @ 04 03 01 02 03", 0, {1, 2, 3, 4, 5, {1, 2, 3, 0, 0, 0}}},
        {"30 11 @ 04 00", 0, {1, 2, 3, 4, 5, {0, 0, 0, 0, 0, 0}}},
        {"30 19 @ 04 08 01 02 03 04 05 06 07 08", 0, {1, 2, 3, 4, 5, {1, 2, 3, 4, 5, 6}}},
        // Numbers are cut to their fields; one that fits no 32 bits is 0.
        {"30 1d 02 05 01 00 00 00 00 02 03 01 02 03 02 00 02 02 01 04 02 01 ff 04 06 01 02 03 04 05 06", 0, {0, 0x203, 0, 4, 255, {1, 2, 3, 4, 5, 6}}},
        {"30 1d 02 05 00 ff ff ff ff 02 03 01 02 03 02 00 02 02 01 04 02 01 ff 04 06 01 02 03 04 05 06", 0, {0xFFFFFFFF, 0x203, 0, 4, 255, {1, 2, 3, 4, 5, 6}}},
        {"30 0f @", zr_err_data_ends_early, untouched}, {"30 80 @ 00 00", zr_err_no_match, untouched},
        {"30 80 @ 04 00", zr_err_bad_contents, untouched}, {"30 13 @ 04 00 05 00", zr_err_trailing_data, untouched},
        {"30 11 @ 02 00", zr_err_no_match, untouched}, {"30 12 @ 04 02 01", zr_err_data_ends_early, untouched},
        {"10 11 @ 04 00", zr_err_primitive_form, untouched}, {"31 11 @ 04 00", zr_err_no_match, untouched},
        {"", zr_err_bad_envelope, untouched}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        std::string text = row.octets;
        if (const size_t at = text.find('@'); at != std::string::npos) text.replace(at, 1, start);
        auto octets = enveloped(text);
        const auto before = octets;
        zr_asn_buffer_t in{static_cast<unsigned int>(octets.size()), octets.data()};
        uuid_t value = untouched;
        EXPECT_EQ(zrAsnDecodeObj(in, value), row.status);
        EXPECT_TRUE(equal(value, row.value)) << hex(&value, sizeof value);
        asn_uuid_t binding(zr_normal);
        for (int times = 0; times < 2; ++times) {
            value = untouched;
            EXPECT_EQ(binding.decode_obj(value, in, 2), row.status);
            EXPECT_TRUE(equal(value, row.value)) << hex(&value, sizeof value);
        }
        EXPECT_EQ(binding.decode_obj(value, in, 3), zr_err_bad_envelope);
        EXPECT_EQ(octets, before);
    }
}

}  // namespace
