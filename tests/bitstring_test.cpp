#include <gtest/gtest.h>

#include <random>

#include "support/allocations.h"
#include "support/ber.h"

using zr_test::hex;
using zr_test::read;
using zr_test::read_from;
using zr_test::written;

namespace {

struct row {
    const char* octets;
    int status;
    unsigned int bits;
    const char* value;
    const char* rewritten;
};

TEST(bitstring, reading) {
    const row rows[] = {
        {"03 02 06 c0", 0, 6, "c0", "03 02 06 c0"},
        {"03 02 06 ff", 0, 6, "c0", "03 02 06 c0"},
        {"03 02 07 ff", 0, 7, "80", "03 02 07 80"},
        {"03 03 01 ff ff", 0, 9, "ff fe", "03 03 01 ff fe"},
        {"03 03 00 ff ff", 0, 16, "ff ff", "03 03 00 ff ff"},
        {"03 01 00", 0, 0, "", "03 01 00"},
        {"03 00", zr_err_bad_bitstring, 0, "", ""},
        {"03 80 00 00", zr_err_bad_bitstring, 0, "", ""},
        {"03 01 01", zr_err_bad_bitstring, 0, "", ""},
        {"03 02 08 00", zr_err_bad_bitstring, 0, "", ""},
        {"03 03 00 ff", zr_err_data_ends_early, 0, "", ""},
        // Segments. The count of unused bits turns round at every level, and masks at every level.
        {"23 04 03 02 00 ff", 0, 8, "ff", "03 02 00 ff"},
        {"23 04 03 02 06 ff", 0, 2, "c0", "03 02 02 c0"},
        {"23 04 03 02 01 ff", 0, 7, "80", "03 02 07 80"},
        {"23 80 03 02 00 aa 03 02 04 f5 00 00", 0, 12, "aa f0", "03 03 04 aa f0"},
        {"23 06 23 04 03 02 06 ff", 0, 6, "c0", "03 02 06 c0"},
        {"23 08 23 80 03 02 00 11 00 00", 0, 8, "11", "03 02 00 11"},
        {"23 06 03 01 00 03 01 00", 0, 0, "", "03 01 00"},
        {"23 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 80 00 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 02 23 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 08 03 02 04 f0 03 02 00 ff", zr_err_bad_bitstring_segment, 0, "", ""},
        {"23 08 23 04 03 02 04 f0 05 00", zr_err_bad_bitstring_segment, 0, "", ""},  // before the next one is read
        {"23 06 04 01 00 03 01 00", zr_err_no_match, 0, "", ""},
        {"23 04 03 80 00 00", zr_err_bad_bitstring, 0, "", ""},
        {"23 80 03 02 00 ff", zr_err_data_ends_early, 0, "", ""},
    };
    zr_asn_bitstring object(zr_normal);
    for (const row& r : rows) {
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
// exhaust the stack.) `Base` is a string type, `Rules` what it makes of its segments.
template <class Base, class Rules>
struct recursive : Base {
    explicit recursive(security_t mode) : Base(mode) {}
    int decode_value(zr_r_buffer_t& input, unsigned int len) override {
        contents.clear();
        if (this->is_constructed() == 0) {
            const int status = Base::decode_value(input, len);
            unsigned char* data = nullptr;
            unsigned int count = 0;
            if (status == 0 && Base::get_value(data, count) == 0) unused = Rules::take_primitive(*this, data, count);
            return status;
        }
        unused = 0;
        zr_r_buffer_t second(input);
        const bool indefinite = this->is_indefinite_length() != 0;
        if (!indefinite && !second.limit(len)) return zr_err_data_ends_early;
        bool any = false;
        while (indefinite ? check_EOC(second) == 0 : second.remaining() != 0) {
            if (any && unused != 0) return zr_err_bad_bitstring_segment;
            recursive segment(zr_normal);
            if (int status = segment.asnread(second)) return status;
            any = true;
            Rules::take_segment(*this, segment);
        }
        input.move_to(second.current(), indefinite ? second.remaining() : input.remaining() - len);
        return Rules::finish(*this, any);
    }
    std::vector<unsigned char> contents;
    unsigned int unused = 0;
};

struct bit_rules {
    template <class T>
    static unsigned int take_primitive(T& own, const unsigned char* data, unsigned int bits) {
        own.contents.assign(data, data + (bits + 7) / 8);
        return bits % 8;
    }
    template <class T>
    static void take_segment(T& own, const T& segment) {
        const size_t octets = segment.contents.size();
        const size_t bits = segment.unused != 0 ? segment.unused + 8 * octets - 8 : 8 * octets;
        own.unused = static_cast<unsigned int>((8 - bits % 8) % 8);
        own.contents.insert(own.contents.end(), segment.contents.begin(),
                            segment.contents.begin() + static_cast<ptrdiff_t>((bits + 7) / 8));
    }
    template <class T>
    static int finish(T& own, bool any) {
        if (!any) return zr_err_bad_bitstring;
        if (own.unused != 0) own.contents.back() &= static_cast<unsigned char>(0xFF << own.unused);
        return 0;
    }
};

struct octet_rules {
    template <class T>
    static unsigned int take_primitive(T& own, const unsigned char* data, unsigned int count) {
        own.contents.assign(data, data + count);
        return 0;
    }
    template <class T>
    static void take_segment(T& own, const T& segment) {
        own.contents.insert(own.contents.end(), segment.contents.begin(), segment.contents.end());
    }
    template <class T>
    static int finish(T&, bool) {
        return 0;
    }
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

template <class Base, class Rules>
void compare_with_recursion(unsigned char tag) {
    std::mt19937 random(20);
    unsigned int good = 0, bad = 0;
    for (int round = 0; round < 40000; ++round) {
        std::vector<unsigned char> octets;
        append_segments(octets, tag, 4, random);
        Base object(zr_normal);
        recursive<Base, Rules> reference(zr_normal);
        const auto actual = read_from(object, octets);
        const auto expected = read_from(reference, octets);
        ASSERT_EQ(actual.status, expected.status) << hex(octets);
        ASSERT_EQ(actual.consumed, expected.consumed) << hex(octets);
        ++(actual.status == 0 ? good : bad);
        if (actual.status != 0) continue;
        unsigned char* data = nullptr;
        unsigned int count = 0;
        ASSERT_EQ(object.get_value(data, count), 0);
        if (tag == 3) {
            ASSERT_EQ(count, reference.contents.size() * 8 - (reference.unused != 0 ? 8 - reference.unused : 0))
                << hex(octets);
            count = (count + 7) / 8;
        }
        ASSERT_EQ(hex(data, count), hex(reference.contents)) << hex(octets);
    }
    EXPECT_GT(good, 5000U);
    EXPECT_GT(bad, 5000U);
}

TEST(bitstring, segments_read_as_recursion_would) { compare_with_recursion<zr_asn_bitstring, bit_rules>(3); }
TEST(octetstring, segments_read_as_recursion_would) { compare_with_recursion<zr_asn_octetstring, octet_rules>(4); }

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
    const struct {
        unsigned int bits;
        const char* octets;
    } rows[] = {{0, "03 01 00"},    {1, "03 02 01 80"},     {2, "03 02 02 c0"},    {3, "03 02 03 e0"},
                {4, "03 02 04 f0"}, {5, "03 02 05 f8"},     {6, "03 02 06 fc"},    {7, "03 02 07 fe"},
                {8, "03 02 00 ff"}, {10, "03 03 02 ff c0"}, {16, "03 03 00 ff ff"}};
    const unsigned char ones[] = {0xFF, 0xFF};
    zr_asn_bitstring object(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    for (const auto& r : rows) {
        EXPECT_EQ(object.set_value(ones, r.bits), 0);
        EXPECT_EQ(parent.is_encoding_valid(), 0);
        EXPECT_EQ(written(object), r.octets);
        EXPECT_EQ(written(parent).substr(6), r.octets);
        unsigned char* data = nullptr;
        unsigned int bits = 0;
        EXPECT_EQ(object.get_value(data, bits), 0);
        EXPECT_EQ(bits, r.bits);
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
    const struct {
        std::vector<int> bits;  // set in this order; negative: cleared, from ~n
        const char* octets;
    } rows[] = {
        {{0}, "03 02 07 80"},          {{1}, "03 02 06 40"},
        {{2}, "03 02 05 20"},          {{3}, "03 02 04 10"},
        {{4}, "03 02 03 08"},          {{5}, "03 02 01 04"},  // two unused bits count as one
        {{6}, "03 02 01 02"},          {{7}, "03 02 00 01"},
        {{0, 5}, "03 02 01 84"},       {{15}, "03 03 00 00 01"},
        {{9}, "03 03 06 00 40"},       {{9, 7}, "03 03 06 01 40"},
        {{20, ~20}, "03 01 00"},       {{3, 20, ~20}, "03 02 04 10"},
        {{~20}, "03 01 00"},           {{7, 12, ~12}, "03 02 00 01"},
        {{7, 15, ~15}, "03 02 00 01"},
    };
    zr_asn_namedbits object(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    for (const auto& r : rows) {
        SCOPED_TRACE(r.octets);
        object.invalidate_value(zr_invalidate_all);
        EXPECT_EQ(written(object), "275063200");
        for (int n : r.bits)
            EXPECT_EQ(object.set_bit(static_cast<unsigned int>(n < 0 ? ~n : n), n < 0 ? 0 : 1), 0);
        EXPECT_EQ(parent.is_present(), 1);
        zr_buffer_t untrimmed(zr_normal);
        EXPECT_EQ(object.get_encoding(untrimmed), 0);
        EXPECT_EQ(written(parent).substr(6), r.octets);
        EXPECT_EQ(written(object), r.octets);
        for (int n : r.bits) {
            int bit = -1;
            EXPECT_EQ(object.get_bit(static_cast<unsigned int>(n < 0 ? ~n : n), bit), 0);
            if (r.bits.size() == 1) {
                EXPECT_EQ(bit, n < 0 ? 0 : 1);
            }
        }
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
    size_t made = 0;
    {
        zr_test::allocations watch;
        object.set_bit(80000000, 1);
        made = watch.made();
        watch.fail_allocation(1);
        EXPECT_THROW(object.set_bit(160000000, 1), zr_asn_memexception);
    }
    EXPECT_EQ(made, 1U);
    EXPECT_EQ(object.is_present(), 1);
    int bit = -1;
    EXPECT_EQ(object.get_bit(80000000, bit), 0);
    EXPECT_EQ(bit, 1);
    object.set_bit(80000000, 0);
    object.set_bit(2000000000, 0);
    EXPECT_EQ(written(object), "03 01 00");
}

}  // namespace
