#include "zrasn/guard.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "support/allocations.h"
#include "zrasn/records.h"

using zr_test::allocations;

namespace {

using list_guard = zr::decoded<attrlist_s_t>;
static_assert(!std::is_copy_constructible_v<zr::encoding> && !std::is_copy_assignable_v<zr::encoding>);
static_assert(!std::is_copy_constructible_v<list_guard> && !std::is_copy_assignable_v<list_guard>);
static_assert(std::is_nothrow_move_constructible_v<zr::encoding> && std::is_nothrow_move_assignable_v<zr::encoding>);
static_assert(std::is_nothrow_move_constructible_v<list_guard> && std::is_nothrow_move_assignable_v<list_guard>);

char name[] = "name";
attr_s_t attr = {name, 0, nullptr};
attrlist_s_t list = {1, &attr};

zr::encoding encoded() {
    zr::encoding octets;
    EXPECT_EQ(zrAsnEncodeObj(octets.out(), list), 0);
    return octets;
}

TEST(guard, releases_at_the_end_of_its_scope) {
    allocations watch;
    {
        zr::encoding octets = encoded();
        EXPECT_EQ(octets.size(), 18u);
        EXPECT_EQ(octets.data()[0], 4);
        EXPECT_EQ(watch.live(), 1u);
        list_guard copy;
        EXPECT_EQ(copy->attrs, nullptr);
        for (int twice = 0; twice < 2; ++twice) {  // the second time releases what the first one made
            ASSERT_EQ(zrAsnDecodeObj(octets.in(), copy.out()), 0);
            EXPECT_STREQ(std::as_const(copy)->attrs[0].name, "name");
            EXPECT_EQ((*copy).attr_count, 1u);
            EXPECT_EQ(zrAsnEncodeObj(octets.out(), *copy), 0);
        }
        octets.in().data[4] = 0xff;
        EXPECT_NE(zrAsnDecodeObj(octets.in(), copy.out()), 0);
        EXPECT_EQ(std::as_const(copy)->attr_count, 0u);
        EXPECT_EQ((*std::as_const(copy)).attrs, nullptr);
    }
    EXPECT_EQ(watch.live(), 0u);
}

TEST(guard, moves_and_hands_over) {
    allocations watch;
    {
        zr::encoding octets = encoded(), other = encoded();
        const unsigned char* block = octets.data();
        other = std::move(octets);
        EXPECT_EQ(watch.live(), 1u);
        EXPECT_EQ(other.data(), block);
        EXPECT_EQ(octets.data(), nullptr);
        EXPECT_EQ(octets.size(), 0u);
        zr::encoding& same = other;
        other = std::move(same);
        EXPECT_EQ(other.data(), block);
        const zr::encoding again(other.release());
        EXPECT_EQ(other.data(), nullptr);
        EXPECT_EQ(again.size(), 18u);

        zr::encoding source = encoded();
        list_guard copy, second;
        ASSERT_EQ(zrAsnDecodeObj(source.in(), copy.out()), 0);
        ASSERT_EQ(zrAsnDecodeObj(source.in(), second.out()), 0);
        const attr_s_t* attrs = copy->attrs;
        second = std::move(copy);
        EXPECT_EQ(copy->attr_count, 0u);
        EXPECT_EQ(second->attrs, attrs);
        list_guard& itself = second;
        second = std::move(itself);
        list_guard third(std::move(second));
        EXPECT_EQ(third->attrs, attrs);
        attrlist_s_t mine = third.release();
        EXPECT_EQ(third->attrs, nullptr);
        EXPECT_STREQ(mine.attrs[0].name, "name");
        zrAsnFreeObj(mine);
    }
    EXPECT_EQ(watch.live(), 0u);
}

}  // namespace
