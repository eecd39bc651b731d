// Packed records: what they hold, how many blocks they take, and what is left after a failure.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "base_idls/attrlist_asn.h"
#include "base_idls/namevalue_asn.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/out_of_memory.h"
#include "support/routes.h"
#include "zrasn/decode.h"

namespace zr_test {
namespace {

// A structure whose contents lie in packed blocks.
class packed_structure {
public:
    explicit packed_structure(const zr::record_type& type) : type_(type), block_(zeroed(type.size)) {}
    ~packed_structure() { std::free(block_); }
    packed_structure(const packed_structure&) = delete;
    packed_structure& operator=(const packed_structure&) = delete;

    int decode(const octets& ber, const zr::decode_options& options = {}) {
        envelope in(ber);
        return type_.decode_packed(in.all().data(), in.all().size(), block_, blocks, options, report);
    }
    const void* get() const { return block_; }

    zr::packed_blocks blocks;
    zr::decode_report report;

private:
    const zr::record_type& type_;
    void* block_;
};

TEST(packed, holds_what_a_decode_gives) {
    std::mt19937 random(51);
    size_t decoded = 0, refused = 0;
    for (const zr::record_type* type : all_records()) {
        packed_structure packed(*type);
        for (unsigned i = 0; i < 120; ++i) {
            structure original(*type), plain(*type);
            fill(*type, original.get(), random, {300, 5, false});
            octets ber = encode(entry_points, original).ber;
            if (i % 3 == 1) ber = rewrite_ber(parse_ber(ber), random, {true, i % 2 == 0, i % 4 < 2, i % 5 == 0});
            if (i % 3 == 2) ber[random() % ber.size()] ^= static_cast<unsigned char>(1 << random() % 8);
            const int expected = decode(entry_points, ber, plain);
            ASSERT_EQ(packed.decode(ber), expected) << type->name << ": " << hex(ber);
            ASSERT_EQ(difference(*type, packed.get(), plain.get()), "") << type->name << ": " << hex(ber);
            ASSERT_TRUE(expected == 0 || leftover(*type, packed.get()).empty());
            ++(expected == 0 ? decoded : refused);
            structure strict(*type);
            zr::decode_options options;
            options.strict = true;
            zr::decode_report report;
            const octets whole = envelope(ber).all();
            const int strictly = type->decode(whole.data(), whole.size(), strict.get(), options, report);
            ASSERT_EQ(packed.decode(ber, options), strictly) << type->name << ": " << hex(ber);
            ASSERT_EQ(packed.report.offset, report.offset) << type->name << ": " << hex(ber);
        }
    }
    EXPECT_GT(decoded, 3000u);
    EXPECT_GT(refused, 1000u);
}

TEST(packed, one_block_and_none_when_it_was_kept) {
    std::mt19937 random(52);
    for (const zr::record_type* type : all_records()) {
        structure original(*type);
        fill(*type, original.get(), random, {2000, 4, true});
        const octets whole = envelope(encode(entry_points, original).ber).all();
        structure out(*type);
        zr::packed_blocks blocks;
        zr::decode_report report;
        allocations watched;
        const auto decode_once = [&] {
            const size_t before = watched.made();
            EXPECT_EQ(type->decode_packed(whole.data(), whole.size(), out.get(), blocks, {}, report), 0);
            return watched.made() - before;
        };
        EXPECT_LE(decode_once(), 3u) << type->name;
        EXPECT_EQ(decode_once(), 0u) << type->name;
        std::memset(out.get(), 0, type->size);
        blocks.release();
        EXPECT_EQ(watched.live(), 0u);
    }
}

TEST(packed, memory_runs_out) {
    std::mt19937 random(53);
    for (const zr::record_type* type : all_records()) {
        structure original(*type);
        fill(*type, original.get(), random, {400, 4, true});
        const octets plain = encode(entry_points, original).ber;
        for (const octets& ber : {plain, rewrite_ber(parse_ber(plain), random)}) {
            const octets whole = envelope(ber).all();
            structure out(*type);
            // Each record is read on one of two ways: at once, or by the reader that keeps limits.
            zr::decode_options options;
            if (random() % 2 == 0) options.limits.depth = 50;
            fail_each_allocation([&](auto&& failing) {
                zr::packed_blocks blocks;
                zr::decode_report report;
                int status = 0;
                caught_stderr printed;
                failing([&] {
                    status = type->decode_packed(whole.data(), whole.size(), out.get(), blocks, options, report);
                });
                ASSERT_EQ(printed.take(), "");
                if (status == 0) {
                    ASSERT_EQ(difference(*type, out.get(), original.get()), "") << type->name;
                } else {
                    ASSERT_EQ(status, zr_err_out_of_memory);
                    ASSERT_EQ(leftover(*type, out.get()), "");
                    // All room was taken back, and the block that was kept stays of use.
                    void* const room = blocks.allocate<1>(1);
                    blocks.clear();
                    ASSERT_EQ(blocks.allocate<1>(1), room);
                    ASSERT_EQ(type->decode_packed(whole.data(), whole.size(), out.get(), blocks, {}, report), 0);
                }
                std::memset(out.get(), 0, type->size);
            });
        }
    }
}

// Room that was given back or away is not handed out again, also when memory is out; other room is aligned.
TEST(packed, blocks) {
    zr::packed_blocks first, second;
    first.start(64);
    EXPECT_NE(first.allocate<1>(3), nullptr);
    for (const size_t octets : {1, 8, 5, 200})
        EXPECT_EQ(reinterpret_cast<uintptr_t>(first.allocate<8>(octets)) % 8, 0u);
    EXPECT_EQ(first.allocate<1>(SIZE_MAX / 2), nullptr);
    second = std::move(first);
    allocations watched;
    watched.fail_allocation(1, true);
    EXPECT_EQ(first.allocate<1>(1), nullptr);
    EXPECT_NE(second.allocate<1>(1), nullptr);
    second.release();
    EXPECT_EQ(second.allocate<1>(1), nullptr);
}

TEST(packed, moves) {
    const octets whole = envelope(bytes("30 0a 30 08 30 06 0c 02 41 42 30 00")).all();
    const zr_asn_buffer_t in{static_cast<unsigned int>(whole.size()), const_cast<unsigned char*>(whole.data())};
    zr::packed<attrlist_s_t> first, other;
    ASSERT_EQ(first.decode(in), 0);
    const char* const name = first->attrs[0].name;
    EXPECT_STREQ(name, "AB");
    zr::packed<attrlist_s_t> moved(std::move(first));
    EXPECT_EQ(moved->attrs[0].name, name);
    EXPECT_EQ(first->attr_count, 0u);
    ASSERT_EQ(other.decode(in), 0);
    other = std::move(moved);
    EXPECT_EQ((*other).attrs[0].name, name);
    EXPECT_EQ(moved->attrs, nullptr);
    other.clear();
    EXPECT_EQ(other->attr_count, 0u);
    ASSERT_EQ(other.decode(in), 0);
    EXPECT_EQ(other->attrs[0].name, name);  // in the block that was kept
    ASSERT_EQ(other.decode({4, in.data}), zr_err_bad_envelope);
    EXPECT_EQ(other->attrs, nullptr);
    other.release();
    static_assert(std::is_same_v<decltype(*other), const attrlist_s_t&>);
}

}  // namespace
}  // namespace zr_test
