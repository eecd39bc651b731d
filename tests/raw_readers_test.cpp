// The raw readers: what each gives, consumes and refuses, and that nothing outside the octets is touched.
#include "asn1/asn1.h"

#include <gtest/gtest.h>

#include "asn1/asnbase/status.h"
#include "support/allocations.h"
#include "support/hex.h"
#include "support/value_readers.h"

namespace zr_test {
namespace {

// What the readers move over: octets of exactly their size, so that a sanitizer sees the first one read beyond.
struct source {
    explicit source(const char* text) : octets(bytes(text)) {
        octets.shrink_to_fit();
        rewind();
    }
    void rewind() {
        cursor = octets.data();
        remaining = static_cast<unsigned int>(octets.size());
    }
    long moved() const { return static_cast<long>(cursor - octets.data()); }

    std::vector<unsigned char> octets;
    unsigned char* cursor;
    unsigned int remaining;
};

TEST(raw_readers, identifiers) {
    // clang-format off
    static const struct {
        const char* octets; int status; unsigned int tag, constructed, cls;
        long moved; unsigned int remaining;  // of *cursor, and behind it
        long slot;  // what the slot behind *cursor points at; -1 untouched
    } table[] = {
        {"", zr_err_data_ends_early, 9, 9, 9, 0, 0, -1}, {"02 01 05", 0, 2, 0, 0, 1, 2, -1},
        {"30", 0, 16, 1, 0, 1, 0, -1}, {"7e", 0, 30, 1, 1, 1, 0, -1}, {"80 00", 0, 0, 0, 2, 1, 1, -1},
        {"e5 00", 0, 5, 1, 3, 1, 1, -1},
        // High tag numbers: the identifier octet is counted in, the last octet is not, and nothing is consumed.
        {"1f", zr_err_data_ends_early, 9, 9, 9, 0, 1, -1}, {"1f 05", 0, 31, 0, 0, 0, 0, 1},
        {"3f 81 05", 0, 8065, 1, 0, 0, 0, 2}, {"3f 81", zr_err_data_ends_early, 9, 9, 9, 0, 2, -1},
        {"9f 81 82 03 00 00", 0, (31u << 14) + (1u << 7) + 2, 0, 2, 0, 2, 3},
        {"ff ff", zr_err_data_ends_early, 9, 9, 9, 0, 2, -1}, {"ff ff ff ff ff ff 7f", 0, 0xFFFFFFFF, 1, 3, 0, 0, 6}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        source in(row.octets);
        unsigned char* slots[2] = {in.cursor, nullptr};
        unsigned int tag = 9, constructed = 9, cls = 9;
        EXPECT_EQ(zrAsnGetType(slots, &in.remaining, &tag, &constructed, &cls), row.status);
        EXPECT_EQ(tag, row.tag);
        EXPECT_EQ(constructed, row.constructed);
        EXPECT_EQ(cls, row.cls);
        EXPECT_EQ(slots[0] - in.cursor, row.moved);
        EXPECT_EQ(in.remaining, row.remaining);
        EXPECT_EQ(slots[1] == nullptr ? -1 : slots[1] - in.cursor, row.slot);
    }
}

TEST(raw_readers, lengths) {
    // clang-format off
    static const struct { const char* octets; int status; unsigned int definite, length; long moved; } table[] = {
        {"", zr_err_data_ends_early, 9, 9, 0}, {"00", 0, 1, 0, 1}, {"7f", 0, 1, 127, 1}, {"80 00", 0, 0, 0, 1},
        {"81", zr_err_data_ends_early, 1, 0, 0},
        {"81 05", 0, 1, 5, 2},  // not minimal: accepted
        {"82 01", zr_err_data_ends_early, 1, 1, 0}, {"82 01 00", 0, 1, 256, 3},
        {"84 ff ff ff ff", 0, 1, 0xFFFFFFFF, 5}, {"84 ff ff ff", zr_err_data_ends_early, 1, 0xFFFFFF, 0},
        {"86 01 02 00 00 00 07", 0, 1, 7, 7},  // what does not fit is shifted out
        {"ff 01 02", zr_err_data_ends_early, 1, 0x0102, 0}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        source in(row.octets);
        unsigned int definite = 9, length = 9;
        EXPECT_EQ(zrAsnGetLength(&in.cursor, &in.remaining, &definite, &length), row.status);
        EXPECT_EQ(definite, row.definite);
        EXPECT_EQ(length, row.length);
        EXPECT_EQ(in.moved(), row.moved);
        EXPECT_EQ(in.remaining, in.octets.size() - static_cast<size_t>(row.moved));
    }
    source all("ff");
    all.octets.resize(127, 0xAA);
    all.octets.push_back(0x55);
    all.rewind();
    unsigned int definite = 9, length = 9;
    EXPECT_EQ(zrAsnGetLength(&all.cursor, &all.remaining, &definite, &length), 0);
    EXPECT_EQ(length, 0xAAAAAA55);
    EXPECT_EQ(all.remaining, 0u);
}

// Every reader with every length of content and of input, and with the memory gone: one rule for all.
TEST(raw_readers, refusals_touch_nothing_and_successes_consume_the_length) {
    const unsigned int lengths[] = {0, 1, 2, 3, 4, 5, 6, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    for (const value_reader& reader : value_readers) {
        const bool is_text = reader.call == read_text;
        for (const unsigned int len : lengths) {
            for (unsigned int left = 0; left <= 6; ++left) {
                SCOPED_TRACE(testing::Message() << reader.name << ", len " << len << " of " << left);
                int expected = left < len ? zr_err_data_ends_early : 0;
                if (len == 0 && reader.value_required) expected = zr_err_empty_contents;
                if (len > 4 && reader.limited) expected = zr_err_integer_too_long;
                const bool fails = expected == 0 && (reader.block || is_text);
                for (int out_of_memory = 0; out_of_memory <= (fails ? 1 : 0); ++out_of_memory) {
                    std::vector<unsigned char> octets(left);
                    if (is_text) octets.push_back(0x41);  // where its NUL goes
                    const auto before = octets;
                    unsigned char* cursor = octets.data();
                    unsigned int remaining = left;
                    outputs out;
                    allocations watch;
                    if (out_of_memory != 0) watch.fail_allocation(1);
                    const int status = reader.call(&cursor, &remaining, len, out);
                    const size_t live = watch.live();
                    ASSERT_EQ(status, out_of_memory != 0 ? zr_err_out_of_memory : expected);
                    const unsigned int consumed = status == 0 ? len : 0;
                    ASSERT_EQ(cursor - octets.data(), static_cast<long>(consumed));
                    ASSERT_EQ(remaining, left - consumed);
                    ASSERT_EQ(live, status == 0 && reader.block ? 1u : 0u);
                    ASSERT_EQ(out.count, status == 0 ? reader.count(len) : 77u);
                    if (status != 0) {
                        ASSERT_EQ(octets, before);
                        ASSERT_EQ(out.value, 77);
                        ASSERT_EQ(out.pointer, nullptr);
                    } else if (reader.block) {
                        std::free(block_of(out.pointer, reader.behind(len)));
                    }
                }
            }
        }
    }
}

TEST(raw_readers, integers) {
    // clang-format off
    static const struct { const char* octets; unsigned int len; long value; } table[] = {
        {"05", 1, 5}, {"ff", 1, -1}, {"00 80", 2, 128}, {"ff 7f", 2, -129}, {"7f ff ff ff", 4, 0x7FFFFFFF},
        {"80 00 00 00", 4, -0x7FFFFFFF - 1}, {"ff ff ff fe", 4, -2}, {"00 ff ff", 3, 65535}, {"80", 0, -1},
        {"7f", 0, 0}, {"", 0, 0}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        source in(row.octets);
        long value = 77;
        EXPECT_EQ(zrAsnGetIntegerValue(&in.cursor, &in.remaining, row.len, &value), 0);
        EXPECT_EQ(value, row.value);
    }
}

// What the block readers store: all octets in order, the first only, or none. The rest of the block is zero.
TEST(raw_readers, blocks) {
    // clang-format off
    const struct { int flag; long (*behind)(unsigned int len); const char* stored[3]; } table[] = {  // of 1 to 3 octets
        {0, end, {"a1", "a1 b2", "a1 b2 c3"}}, {1, before, {"a1", "00 00", "00 00 00"}},
        {2, far_before, {"a1", "a1 00", "a1 00 00"}}, {-1, far_before, {"a1", "a1 00", "a1 00 00"}}
    };
    // clang-format on
    for (const auto& row : table) {
        for (unsigned int len = 1; len <= 3; ++len) {
            SCOPED_TRACE(testing::Message() << "flag " << row.flag << " len " << len);
            source in("a1 b2 c3");
            unsigned int count = 0;
            unsigned char* out = nullptr;
            ASSERT_EQ(zrAsnGetIntegerValue(&in.cursor, &in.remaining, len, &out, &count, row.flag), 0);
            void* block = block_of(out, row.behind(len));
            EXPECT_EQ(hex(block, len), row.stored[len - 1]);
            std::free(block);
        }
    }
}

TEST(raw_readers, bit_strings) {
    // clang-format off
    static const struct { const char* octets; int status; unsigned int bits; const char *copy, *input_left; } table[] = {
        {"03 a9", 0, 5, "a9", "03 a8"}, {"00", 0, 0, "", "00"}, {"01", zr_err_bad_contents, 77, "", "01"},
        {"08 ff", zr_err_bad_contents, 77, "", "08 ff"}, {"00 ff ff ff", 0, 24, "ff ff ff", "00 ff ff ff"},
        {"01 ff", 0, 7, "ff", "01 fe"}, {"02 ff", 0, 6, "ff", "02 fc"}, {"04 ff", 0, 4, "ff", "04 f0"},
        {"05 ff", 0, 3, "ff", "05 e0"}, {"06 ff", 0, 2, "ff", "06 c0"}, {"07 ff ff", 0, 9, "ff ff", "07 ff 80"}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        source in(row.octets);
        const unsigned int data = in.remaining - 1;
        unsigned char* out = nullptr;
        unsigned int bits = 77;
        ASSERT_EQ(zrAsnGetBitstringValue(&in.cursor, &in.remaining, in.remaining, &out, &bits), row.status);
        EXPECT_EQ(bits, row.bits);
        EXPECT_EQ(hex(in.octets), row.input_left);
        if (row.status != 0) continue;
        EXPECT_EQ(hex(out - data, data), row.copy);
        std::free(out - data);
    }
}

TEST(raw_readers, copies_text_and_null) {
    source in("41 42 43 02");
    unsigned int count = 0;
    unsigned char* out = nullptr;
    ASSERT_EQ(zrAsnGetOctetstringValue(&in.cursor, &in.remaining, 3, &out, &count), 0);
    EXPECT_EQ(hex(out, count), "41 42 43");
    std::free(out);

    zr_asn_buffer_t oid{0, nullptr};
    in.rewind();
    EXPECT_EQ(zrAsnGetOIDValue(&in.cursor, &in.remaining, 0, nullptr), zr_err_bad_argument);
    ASSERT_EQ(zrAsnGetOIDValue(&in.cursor, &in.remaining, 4, &oid), 0);
    EXPECT_EQ(hex(oid.data, oid.length), "41 42 43 02");
    std::free(oid.data);

    in.rewind();
    ASSERT_EQ(zrAsnGetCharstringValue(&in.cursor, &in.remaining, 3, nullptr), 0);
    EXPECT_EQ(hex(in.octets), "41 42 43 00");  // the next identifier is gone

    EXPECT_EQ(zrAsnGetNullValue(nullptr, nullptr, 7), 0);
}

}  // namespace
}  // namespace zr_test
