// BIT STRING: how bits are set, cleared and trimmed (what is read stands in elements.txt).
#include <gtest/gtest.h>

#include <utility>

#include "support/allocations.h"
#include "support/ber.h"

namespace zr_test {
namespace {

TEST(bitstring, segments_nest_to_any_depth) {
    constexpr size_t levels = 1000000;
    std::vector<unsigned char> octets;
    for (size_t i = 0; i < levels; ++i)
        octets.insert(octets.end(), {0x23, 0x80});
    octets.insert(octets.end(), {0x03, 0x02, 0x06, 0xFF});
    octets.resize(octets.size() + 2 * levels);
    zr_asn_bitstring object(zr_normal);
    const auto result = read_from(object, octets);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.consumed, octets.size());
    EXPECT_EQ(written(object), "03 02 06 c0");  // an even number of levels
}

TEST(bitstring, setting) {
    const std::pair<unsigned int, const char*> rows[] = {
        {0, "03 01 00"},    {1, "03 02 01 80"},     {2, "03 02 02 c0"},    {3, "03 02 03 e0"},
        {4, "03 02 04 f0"}, {5, "03 02 05 f8"},     {6, "03 02 06 fc"},    {7, "03 02 07 fe"},
        {8, "03 02 00 ff"}, {10, "03 03 02 ff c0"}, {16, "03 03 00 ff ff"}};
    const unsigned char ones[] = {0xFF, 0xFF};
    zr_asn_bitstring object(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    for (const auto& [bits, octets] : rows) {
        EXPECT_EQ(object.set_value(ones, bits), 0);
        EXPECT_EQ(parent.is_encoding_valid(), 0);
        EXPECT_EQ(written(object), octets);
        EXPECT_EQ(written(parent).substr(6), octets);
        unsigned char* data = nullptr;
        unsigned int count = 99;
        EXPECT_EQ(object.get_value(data, count), 0);
        EXPECT_EQ(count, bits);
    }
}

TEST(bitstring, defaults) {
    zr_asn_namedbits object(zr_normal);
    unsigned char* data = nullptr;
    unsigned int bits = 0;
    int bit = -1;
    EXPECT_EQ(object.get_value(data, bits), zr_err_value_absent);
    EXPECT_EQ(object.get_bit(0, bit), zr_err_value_absent);
    const unsigned char octets[] = {0xA0};
    object.set_class(2);
    EXPECT_EQ(object.set_default_value(octets, 8), 0);
    EXPECT_EQ(object.get_value(data, bits), 0);
    EXPECT_EQ(bits, 8U);
    for (unsigned int n : {0U, 1U, 2U, 8U, ~0U}) {
        EXPECT_EQ(object.get_bit(n, bit), 0);
        EXPECT_EQ(bit, n == 0 || n == 2 ? 1 : 0);
    }
    EXPECT_EQ(written(object), "");
    object.set_bit(0, 1);
    EXPECT_EQ(written(object), "83 02 07 80");
    object.set_default_value(new zr_asn_integer(zr_normal));
    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(object.get_bit(0, bit), zr_err_value_absent);
}

TEST(namedbits, writing_trims) {
    // The bits are set in this order; negative: cleared, from ~n. Two unused bits count as one.
    const std::pair<std::vector<int>, const char*> rows[] = {
        {{0}, "03 02 07 80"},          {{1}, "03 02 06 40"},          {{2}, "03 02 05 20"},
        {{3}, "03 02 04 10"},          {{4}, "03 02 03 08"},          {{5}, "03 02 01 04"},
        {{6}, "03 02 01 02"},          {{7}, "03 02 00 01"},          {{0, 5}, "03 02 01 84"},
        {{15}, "03 03 00 00 01"},      {{9}, "03 03 06 00 40"},       {{9, 7}, "03 03 06 01 40"},
        {{20, ~20}, "03 01 00"},       {{3, 20, ~20}, "03 02 04 10"}, {{~20}, "03 01 00"},
        {{7, 12, ~12}, "03 02 00 01"}, {{7, 15, ~15}, "03 02 00 01"}};
    zr_asn_namedbits object(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    for (const auto& [bits, octets] : rows) {
        SCOPED_TRACE(octets);
        EXPECT_EQ(read(object, "03 02 00 ff"), 0);
        object.invalidate_value(zr_invalidate_all);  // and starts anew
        EXPECT_EQ(written(object), "275063200");
        for (int n : bits)
            EXPECT_EQ(object.set_bit(static_cast<unsigned int>(n < 0 ? ~n : n), n < 0 ? 0 : 1), 0);
        EXPECT_EQ(parent.is_present(), 1);
        zr_buffer_t untrimmed(zr_normal);
        EXPECT_EQ(object.get_encoding(untrimmed), 0);
        EXPECT_EQ(written(parent).substr(6), octets);
        EXPECT_EQ(written(object), octets);
        int bit = -1;
        EXPECT_EQ(object.get_bit(static_cast<unsigned int>(bits.back() < 0 ? ~bits.back() : bits.back()), bit), 0);
        EXPECT_EQ(bit, bits.back() < 0 ? 0 : 1);
    }
}

TEST(namedbits, a_far_bit_takes_one_growth) {
    zr_asn_namedbits object(zr_normal);
    allocations watch;
    object.set_bit(80000000, 1);
    EXPECT_EQ(watch.made(), 1U);
    watch.fail_allocation(1);
    EXPECT_THROW(object.set_bit(160000000, 1), zr_asn_memexception);
    int bit = -1;
    EXPECT_EQ(object.get_bit(80000000, bit), 0);
    EXPECT_EQ(bit, 1);
    object.set_bit(80000000, 0);
    object.set_bit(2000000000, 0);
    EXPECT_EQ(written(object), "03 01 00");
}

}  // namespace
}  // namespace zr_test
