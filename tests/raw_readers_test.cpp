// The raw readers: what each gives, consumes and refuses, and that nothing outside the octets is touched.
#include "asn1/asn1.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "asn1/asnbase/status.h"
#include "support/allocations.h"
#include "support/hex.h"

namespace {

using zr_test::bytes;
using zr_test::hex;

// Octets of exactly their size, so that a sanitizer sees the first one read beyond.
std::vector<unsigned char> exact(const char* text) {
    const auto octets = bytes(text);
    return {octets.begin(), octets.end()};
}

TEST(raw_readers, identifiers) {
    // clang-format off
    static const struct {
        const char* octets;
        int status;
        unsigned int tag, constructed, cls;
        long moved;              // of *cursor
        unsigned int remaining;  // afterwards
        long slot;               // what the slot behind *cursor points at; -1 untouched
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
        auto octets = exact(row.octets);
        unsigned char* slots[2] = {octets.data(), nullptr};
        auto remaining = static_cast<unsigned int>(octets.size());
        unsigned int tag = 9, constructed = 9, cls = 9;
        EXPECT_EQ(zrAsnGetType(slots, &remaining, &tag, &constructed, &cls), row.status);
        EXPECT_EQ(tag, row.tag);
        EXPECT_EQ(constructed, row.constructed);
        EXPECT_EQ(cls, row.cls);
        EXPECT_EQ(slots[0] - octets.data(), row.moved);
        EXPECT_EQ(remaining, row.remaining);
        EXPECT_EQ(slots[1] == nullptr ? -1 : slots[1] - octets.data(), row.slot);
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
        auto octets = exact(row.octets);
        unsigned char* cursor = octets.data();
        auto remaining = static_cast<unsigned int>(octets.size());
        unsigned int definite = 9, length = 9;
        EXPECT_EQ(zrAsnGetLength(&cursor, &remaining, &definite, &length), row.status);
        EXPECT_EQ(definite, row.definite);
        EXPECT_EQ(length, row.length);
        EXPECT_EQ(cursor - octets.data(), row.moved);
        EXPECT_EQ(remaining, octets.size() - static_cast<size_t>(row.moved));
    }
    auto all = exact("ff");
    all.resize(128, 0xAA);
    all.back() = 0x55;
    unsigned char* cursor = all.data();
    unsigned int remaining = 128, definite = 9, length = 9;
    EXPECT_EQ(zrAsnGetLength(&cursor, &remaining, &definite, &length), 0);
    EXPECT_EQ(length, 0xAAAAAA55);
    EXPECT_EQ(remaining, 0u);
}

// What a value reader gives. `block` is where its block starts, wherever the reader left the caller's pointer.
struct outputs {
    long value = 77;
    unsigned char* pointer = nullptr;
    unsigned int count = 77;
};

struct value_reader {
    const char* name;
    int (*call)(unsigned char** cursor, unsigned int* remaining, unsigned int len, outputs& out);
    bool limited;                      // to four octets
    bool value_required;               // an empty content is refused
    bool block;                        // hands out a block
    long (*behind)(unsigned int len);  // how far behind the block's start the pointer is left
    unsigned int (*count)(unsigned int len);
};

unsigned int same(unsigned int len) { return len; }
long start(unsigned int) { return 0; }
long end(unsigned int len) { return len; }

const value_reader readers[] = {
    {"integer", [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetIntegerValue(c, r, len, &o.value); }, true,
     false, false, start, [](unsigned int) { return 77u; }},
    {"block",
     [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetIntegerValue(c, r, len, &o.pointer, &o.count, 0); },
     true, true, true, end, same},
    {"block, flag 1",
     [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetIntegerValue(c, r, len, &o.pointer, &o.count, 1); },
     true, true, true, [](unsigned int len) { return len == 1 ? -1L : 0L; }, same},
    {"block, flag -1",
     [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetIntegerValue(c, r, len, &o.pointer, &o.count, -1); },
     true, true, true, [](unsigned int len) { return -static_cast<long>(len); }, same},
    {"big-endian",
     [](auto** c, auto* r, auto len, outputs& o) {
         return zrAsnGetLongIntegerValueBigEndian(c, r, len, &o.pointer, &o.count);
     },
     true, true, true, end, same},
    {"little-endian",
     [](auto** c, auto* r, auto len, outputs& o) {
         return zrAsnGetLongIntegerValueLittleEndian(c, r, len, &o.pointer, &o.count);
     },
     true, true, true, [](unsigned int len) { return len == 1 ? -1L : 0L; }, same},
    {"bit string",
     [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetBitstringValue(c, r, len, &o.pointer, &o.count); },
     true, true, true, [](unsigned int len) { return static_cast<long>(len) - 1; },
     [](unsigned int len) { return (len - 1) * 8; }},
    {"oid",
     [](auto** c, auto* r, auto len, outputs& o) {
         zr_asn_buffer_t out{o.count, o.pointer};
         const int status = zrAsnGetOIDValue(c, r, len, &out);
         o.count = out.length;
         o.pointer = out.data;
         return status;
     },
     false, true, true, start, same},
    {"octet string",
     [](auto** c, auto* r, auto len, outputs& o) { return zrAsnGetOctetstringValue(c, r, len, &o.pointer, &o.count); },
     false, true, true, start, same},
    {"text", [](auto** c, auto* r, auto len, outputs&) { return zrAsnGetCharstringValue(c, r, len, nullptr); }, false,
     true, false, start, [](unsigned int) { return 77u; }},
};

// Every reader with every length of content and of input, and with the memory gone: one rule for all.
TEST(raw_readers, refusals_touch_nothing_and_successes_consume_the_length) {
    const unsigned int lengths[] = {0, 1, 2, 3, 4, 5, 6, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
    for (const value_reader& reader : readers) {
        const bool text = std::strcmp(reader.name, "text") == 0;
        for (const unsigned int len : lengths) {
            for (unsigned int left = 0; left <= 6; ++left) {
                SCOPED_TRACE(testing::Message() << reader.name << ", len " << len << " of " << left);
                int expected = left < len ? zr_err_data_ends_early : 0;
                if (len == 0 && reader.value_required) expected = zr_err_empty_contents;
                if (len > 4 && reader.limited) expected = zr_err_integer_too_long;
                const bool fails = expected == 0 && (reader.block || text);
                for (int out_of_memory = 0; out_of_memory <= (fails ? 1 : 0); ++out_of_memory) {
                    std::vector<unsigned char> octets(left);
                    if (text) octets.push_back(0x41);  // where its NUL goes
                    const auto before = octets;
                    unsigned char* cursor = octets.data();
                    unsigned int remaining = left;
                    outputs out;
                    int status = 0;
                    size_t live = 0;
                    {
                        zr_test::allocations watch;
                        if (out_of_memory != 0) watch.fail_allocation(1);
                        status = reader.call(&cursor, &remaining, len, out);
                        live = watch.live();
                    }
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
                        std::free(reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(out.pointer) -
                                                          static_cast<uintptr_t>(reader.behind(len))));
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
        auto octets = exact(row.octets);
        unsigned char* cursor = octets.data();
        auto remaining = static_cast<unsigned int>(octets.size());
        long value = 77;
        EXPECT_EQ(zrAsnGetIntegerValue(&cursor, &remaining, row.len, &value), 0);
        EXPECT_EQ(value, row.value);
    }
}

// What the block readers store: all octets in order, the first only, or none. The rest of the block is zero.
TEST(raw_readers, blocks) {
    static const struct {
        int flag;
        const char* stored;
    } table[] = {{0, "a1 b2 c3"}, {1, "00 00 00"}, {2, "a1 00 00"}, {-1, "a1 00 00"}};
    for (const auto& row : table) {
        for (unsigned int len = 1; len <= 3; ++len) {
            SCOPED_TRACE(testing::Message() << "flag " << row.flag << " len " << len);
            auto octets = exact("a1 b2 c3");
            unsigned char* cursor = octets.data();
            unsigned int remaining = 3, count = 0;
            unsigned char* out = nullptr;
            ASSERT_EQ(zrAsnGetIntegerValue(&cursor, &remaining, len, &out, &count, row.flag), 0);
            const long moved = row.flag == 0 ? len : row.flag != 1 ? -static_cast<long>(len) : len == 1 ? -1 : 0;
            auto* block =
                reinterpret_cast<unsigned char*>(reinterpret_cast<uintptr_t>(out) - static_cast<uintptr_t>(moved));
            const std::string expected = row.flag == 1 && len == 1 ? "a1" : row.stored;
            EXPECT_EQ(hex(block, len), expected.substr(0, len * 3 - 1));
            std::free(block);
        }
    }
}

TEST(raw_readers, bit_strings) {
    // clang-format off
    static const struct {
        const char* octets;
        int status;
        unsigned int bits;
        const char* copy;
        const char* input;  // afterwards
    } table[] = {
        {"03 a9", 0, 5, "a9", "03 a8"}, {"00", 0, 0, "", "00"}, {"01", zr_err_bad_contents, 77, "", "01"},
        {"08 ff", zr_err_bad_contents, 77, "", "08 ff"}, {"00 ff ff ff", 0, 24, "ff ff ff", "00 ff ff ff"},
        {"01 ff", 0, 7, "ff", "01 fe"}, {"02 ff", 0, 6, "ff", "02 fc"}, {"04 ff", 0, 4, "ff", "04 f0"},
        {"05 ff", 0, 3, "ff", "05 e0"}, {"06 ff", 0, 2, "ff", "06 c0"}, {"07 ff ff", 0, 9, "ff ff", "07 ff 80"}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        auto octets = exact(row.octets);
        unsigned char* cursor = octets.data();
        auto remaining = static_cast<unsigned int>(octets.size());
        const unsigned int data = remaining - 1;
        unsigned char* out = nullptr;
        unsigned int bits = 77;
        ASSERT_EQ(zrAsnGetBitstringValue(&cursor, &remaining, remaining, &out, &bits), row.status);
        EXPECT_EQ(bits, row.bits);
        EXPECT_EQ(hex(octets), row.input);
        if (row.status != 0) continue;
        EXPECT_EQ(hex(out - data, data), row.copy);
        std::free(out - data);
    }
}

TEST(raw_readers, copies_text_and_null) {
    auto octets = exact("41 42 43 02");
    unsigned char* cursor = octets.data();
    unsigned int remaining = 4, count = 0;
    unsigned char* out = nullptr;
    ASSERT_EQ(zrAsnGetOctetstringValue(&cursor, &remaining, 3, &out, &count), 0);
    EXPECT_EQ(hex(out, count), "41 42 43");
    std::free(out);

    zr_asn_buffer_t oid{0, nullptr};
    cursor = octets.data();
    remaining = 4;
    EXPECT_EQ(zrAsnGetOIDValue(&cursor, &remaining, 0, nullptr), zr_err_bad_argument);
    ASSERT_EQ(zrAsnGetOIDValue(&cursor, &remaining, 4, &oid), 0);
    EXPECT_EQ(hex(oid.data, oid.length), "41 42 43 02");
    std::free(oid.data);

    cursor = octets.data();
    remaining = 4;
    ASSERT_EQ(zrAsnGetCharstringValue(&cursor, &remaining, 3, nullptr), 0);
    EXPECT_EQ(hex(octets), "41 42 43 00");  // the next identifier is gone

    EXPECT_EQ(zrAsnGetNullValue(nullptr, nullptr, 7), 0);
}

}  // namespace
