// The allocation watcher itself: were it blind, every test of leaks, of exhausted memory and of wiping would pass.
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace zr_test {
namespace {

const struct way {
    const char* name;
    void* (*allocate)();
    void (*release)(void*);
    bool throws;
} ways[] = {
    {"malloc", [] { return std::malloc(40); }, std::free, false},
    {"calloc", [] { return std::calloc(4, 10); }, std::free, false},
    {"realloc", [] { return std::realloc(nullptr, 40); }, std::free, false},
    {"new", [] { return ::operator new(40); }, [](void* p) { ::operator delete(p); }, true},
    {"new[]", [] { return ::operator new[](40); }, [](void* p) { ::operator delete[](p); }, true},
    {"nothrow new", [] { return ::operator new(40, std::nothrow); }, [](void* p) { ::operator delete(p); }, false},
    {"nothrow new[]", [] { return ::operator new[](40, std::nothrow); }, [](void* p) { ::operator delete[](p); },
     false},
    {"inside libstdc++", [] { return static_cast<void*>(new std::string(100, 'x')); },
     [](void* p) { delete static_cast<std::string*>(p); }, true},
};

TEST(allocations, every_way_is_counted_and_can_fail) {
    for (const way& w : ways) {
        SCOPED_TRACE(w.name);
        allocations watch;
        void* block = w.allocate();
        EXPECT_GE(watch.live(), 1U);
        w.release(block);
        EXPECT_EQ(watch.live(), 0U);
        watch.fail_allocation(1);
        bool thrown = false;
        try {
            EXPECT_EQ(w.allocate(), nullptr);
        } catch (const std::bad_alloc&) {
            thrown = true;
        }
        EXPECT_TRUE(watch.failed());
        EXPECT_EQ(thrown, w.throws);
    }
}

TEST(allocations, the_request_asked_for_fails_and_no_other) {
    allocations watch;
    watch.fail_allocation(3);
    for (int i = 0; i < 4; i++) {
        void* volatile block = std::malloc(8);
        EXPECT_EQ(block == nullptr, i == 2) << i;
        std::free(block);
    }
}

TEST(allocations, released_blocks_are_shown_with_their_contents) {
    const secret_search search({"secret"});
    for (const char* text : {"secret", "public"}) {
        char* volatile block = static_cast<char*>(std::malloc(16));
        std::memset(block, '.', 16);
        std::memcpy(block + 10, text, 6);
        block = static_cast<char*>(std::realloc(block, 20));
        std::free(block);
    }
    EXPECT_EQ(search.found(), 2u);
}

TEST(allocations, ten_thousand_blocks_in_any_order) {
    static void* blocks[10000];
    allocations watch;
    for (void*& block : blocks)
        block = std::malloc(24);
    EXPECT_EQ(watch.live(), 10000U);
    for (size_t i = 0; i < 10000; i++)
        std::free(blocks[i * 7919 % 10000]);
    EXPECT_EQ(watch.live(), 0U);
}

}  // namespace
}  // namespace zr_test
