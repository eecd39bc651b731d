#include <gtest/gtest.h>

#include <random>
#include <type_traits>
#include <utility>

#include "support/allocations.h"
#include "support/ber.h"

using zr_test::hex;
using zr_test::read;
using zr_test::read_from;
using zr_test::written;

namespace {

TEST(bitstring, reading) {
    // clang-format off
    const struct { const char* octets; int status; unsigned int bits; const char *value, *rewritten; } rows[] = {
        {"03 02 06 c0", 0, 6, "c0", "03 02 06 c0"}, {"03 02 06 ff", 0, 6, "c0", "03 02 06 c0"},
        {"03 02 07 ff", 0, 7, "80", "03 02 07 80"}, {"03 03 01 ff ff", 0, 9, "ff fe", "03 03 01 ff fe"},
        {"03 03 00 ff ff", 0, 16, "ff ff", "03 03 00 ff ff"}, {"03 01 00", 0, 0, "", "03 01 00"},
        {"03 00", zr_err_bad_bitstring, 0, "", ""}, {"03 80 00 00", zr_err_bad_bitstring, 0, "", ""},
        {"03 01 01", zr_err_bad_bitstring, 0, "", ""}, {"03 02 08 00", zr_err_bad_bitstring, 0, "", ""},
        {"03 03 00 ff", zr_err_data_ends_early, 0, "", ""},
        // Segments. The count of unused bits turns round at every level, and masks at every level.
        {"23 04 03 02 00 ff", 0, 8, "ff", "03 02 00 ff"}, {"23 04 03 02 06 ff", 0, 2, "c0", "03 02 02 c0"},
        {"23 04 03 02 01 ff", 0, 7, "80", "03 02 07 80"},
        {"23 80 03 02 00 aa 03 02 04 f5 00 00", 0, 12, "aa f0", "03 03 04 aa f0"},
        {"23 06 23 04 03 02 06 ff", 0, 6, "c0", "03 02 06 c0"},
        {"23 08 23 80 03 02 00 11 00 00", 0, 8, "11", "03 02 00 11"},
        {"23 06 03 01 00 03 01 00", 0, 0, "", "03 01 00"}, {"23 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 80 00 00", zr_err_bad_bitstring, 0, "", ""}, {"23 02 23 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 08 03 02 04 f0 03 02 00 ff", zr_err_bad_bitstring_segment, 0, "", ""},
        {"23 08 23 04 03 02 04 f0 05 00", zr_err_bad_bitstring_segment, 0, "", ""},  // before the next one is read
        {"23 06 04 01 00 03 01 00", zr_err_no_match, 0, "", ""},
        {"23 04 03 80 00 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 80 03 02 00 ff", zr_err_data_ends_early, 0, "", ""},
    };
    // clang-format on
    zr_asn_bitstring object(zr_normal);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.octets);
        const auto result = read_from(object, r.octets);
        EXPECT_EQ(result.status, r.status);
        EXPECT_EQ(result.consumed, r.status == 0 ? zr_test::bytes(r.octets).size() : 0);
        unsigned char* data = nullptr;
        unsigned int bits = 0;
        EXPECT_EQ(object.get_value(data, bits), r.status == 0 ? 0 : zr_err_value_absent);
        if (r.status != 0) continue;
        EXPECT_EQ(bits, r.bits);
        EXPECT_EQ(hex(data, (bits + 7) / 8), r.value);
        EXPECT_EQ(written(object), r.rewritten);
    }
}

// The rules of segments as they read: a segment object that reads each of them, and so on inwards. (Deep input would
// exhaust the stack.)
template <class Base>
struct recursive : Base {
    static constexpr bool has_bits = std::is_same_v<Base, zr_asn_bitstring>;

    explicit recursive(security_t mode) : Base(mode) {}
    int decode_value(zr_r_buffer_t& input, unsigned int len) override {
        contents.clear();
        unused = 0;
        if (this->is_constructed() == 0) {
            const int status = Base::decode_value(input, len);
            unsigned char* data = nullptr;
            unsigned int count = 0;
            if (status != 0 || Base::get_value(data, count) != 0) return status;
            contents.assign(data, data + (has_bits ? (count + 7) / 8 : count));
            if (has_bits) unused = count % 8;
            return 0;
        }
        zr_r_buffer_t second(input);
        const bool indefinite = this->is_indefinite_length() != 0;
        if (!indefinite && !second.limit(len)) return zr_err_data_ends_early;
        bool any = false;
        while (indefinite ? check_EOC(second) == 0 : second.remaining() != 0) {
            if (any && unused != 0) return zr_err_bad_bitstring_segment;
            recursive segment(zr_normal);
            if (int status = segment.asnread(second)) return status;
            any = true;
            unused = (8 - segment.bits() % 8) % 8;
            contents.insert(contents.end(), segment.contents.begin(), segment.contents.end());
        }
        input.move_to(second.current(), indefinite ? second.remaining() : input.remaining() - len);
        if (has_bits && !any) return zr_err_bad_bitstring;
        if (unused != 0) contents.back() &= static_cast<unsigned char>(0xFF << unused);
        return 0;
    }
    unsigned int bits() const {
        return static_cast<unsigned int>(8 * contents.size()) - (unused != 0 ? 8 - unused : 0);
    }

    std::vector<unsigned char> contents;
    unsigned int unused = 0;  // of the last octet's bits; turns round at every level
};

// Mostly right nests of segments, with damage here and there.
void append_segments(std::vector<unsigned char>& out, unsigned char tag, int depth, std::mt19937& random) {
    const auto any = [&](unsigned int below) { return static_cast<unsigned int>(random() % below); };
    if (depth == 0 || any(3) == 0) {
        std::vector<unsigned char> contents(any(4));
        for (auto& octet : contents)
            octet = static_cast<unsigned char>(random());
        if (tag == 3) contents.insert(contents.begin(), static_cast<unsigned char>(any(6) != 0 ? 0 : any(9)));
        out.push_back(static_cast<unsigned char>(any(40) != 0 ? tag : any(32)));
        out.push_back(any(40) != 0 ? static_cast<unsigned char>(contents.size()) : 0x80);
        out.insert(out.end(), contents.begin(), contents.end());
        return;
    }
    std::vector<unsigned char> inside;
    for (unsigned int count = any(8) != 0 ? 1 + any(3) : 0; count != 0; --count)
        append_segments(inside, tag, depth - 1, random);
    const bool definite = any(2) != 0 && inside.size() < 128;
    out.push_back(static_cast<unsigned char>(0x20 | tag));
    out.push_back(definite ? static_cast<unsigned char>(inside.size() + (any(40) == 0 ? 1 : 0)) : 0x80);
    out.insert(out.end(), inside.begin(), inside.end());
    if (!definite && any(40) != 0) out.insert(out.end(), {0, 0});
}

template <class Base>
void compare_with_recursion(unsigned char tag) {
    std::mt19937 random(20);
    unsigned int good = 0, bad = 0;
    for (int round = 0; round < 40000; ++round) {
        std::vector<unsigned char> octets;
        append_segments(octets, tag, 4, random);
        Base object(zr_normal);
        recursive<Base> reference(zr_normal);
        const auto actual = read_from(object, octets);
        const auto expected = read_from(reference, octets);
        ASSERT_EQ(actual.status, expected.status) << hex(octets);
        ASSERT_EQ(actual.consumed, expected.consumed) << hex(octets);
        ++(actual.status == 0 ? good : bad);
        if (actual.status != 0) object.set_value_valid();  // what has been gathered until then
        unsigned char* data = nullptr;
        unsigned int count = 0;
        ASSERT_EQ(object.get_value(data, count), 0);
        if (tag == 3) {
            ASSERT_EQ(count, reference.bits()) << hex(octets);
            count = (count + 7) / 8;
        }
        ASSERT_EQ(hex(data, count), hex(reference.contents)) << hex(octets);
    }
    EXPECT_GT(good, 5000U);
    EXPECT_GT(bad, 5000U);
}

TEST(bitstring, segments_read_as_recursion_would) { compare_with_recursion<zr_asn_bitstring>(3); }
TEST(octetstring, segments_read_as_recursion_would) { compare_with_recursion<zr_asn_octetstring>(4); }

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

TEST(namedbits, a_cleared_object_starts_anew) {
    zr_asn_namedbits object(zr_normal);
    EXPECT_EQ(read(object, "03 02 03 f8"), 0);
    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(object.set_bit(6, 0), 0);
    EXPECT_EQ(written(object), "03 01 00");
    unsigned char* data = nullptr;
    unsigned int bits = 1;
    EXPECT_EQ(object.get_value(data, bits), 0);
    EXPECT_EQ(bits, 0U);
}

TEST(namedbits, a_far_bit_takes_one_growth) {
    zr_asn_namedbits object(zr_normal);
    zr_test::allocations watch;
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
