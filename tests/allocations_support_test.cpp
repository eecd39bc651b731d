// The allocation watcher itself: were it blind, every test of leaks, of exhausted memory and of wiping would pass.
#include "support/allocations.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

using make = void* (*)();
using drop = void (*)(void*);

struct way {
    const char* name;
    make allocate;
    drop release;
    bool throws;
};

const way ways[] = {
    {"malloc", [] { return std::malloc(40); }, [](void* p) { std::free(p); }, false},
    {"calloc", [] { return std::calloc(4, 10); }, [](void* p) { std::free(p); }, false},
    {"realloc", [] { return std::realloc(nullptr, 40); }, [](void* p) { std::free(p); }, false},
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
        size_t live_with = 0, live_after = 0;
        void* failing = nullptr;
        bool failed = false, thrown = false;
        {
            zr_test::allocations watch;
            void* block = w.allocate();
            live_with = watch.live();
            w.release(block);
            live_after = watch.live();
            watch.fail_allocation(1);
            try {
                failing = w.allocate();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = watch.failed();
        }
        EXPECT_GE(live_with, 1U);
        EXPECT_EQ(live_after, 0U);
        EXPECT_TRUE(failed);
        EXPECT_EQ(failing, nullptr);
        EXPECT_EQ(thrown, w.throws);
    }
}

TEST(allocations, the_request_asked_for_fails_and_no_other) {
    void* blocks[4];
    {
        zr_test::allocations watch;
        watch.fail_allocation(3);
        for (void*& block : blocks)
            block = std::malloc(8);
    }
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(blocks[i] == nullptr, i == 2) << i;
    for (void* block : blocks)
        std::free(block);
}

TEST(allocations, released_blocks_are_shown_with_their_contents) {
    struct seen {
        int count = 0;
        int with_secret = 0;
    } seen;
    {
        zr_test::allocations watch;
        watch.on_release(
            [](void* context, const void* block, size_t size) {
                auto* s = static_cast<struct seen*>(context);
                s->count++;
                if (memmem(block, size, "secret", 6) != nullptr) s->with_secret++;
            },
            &seen);
        for (const char* text : {"secret", "public"}) {
            char* volatile block = static_cast<char*>(std::malloc(16));
            std::memset(block, '.', 16);
            std::memcpy(block + 10, text, 6);
            block = static_cast<char*>(std::realloc(block, 20));
            std::free(block);
        }
    }
    EXPECT_EQ(seen.count, 4);
    EXPECT_EQ(seen.with_secret, 2);
}

TEST(allocations, ten_thousand_blocks_in_any_order) {
    static void* blocks[10000];
    size_t live = 0, left = 0;
    {
        zr_test::allocations watch;
        for (void*& block : blocks)
            block = std::malloc(24);
        live = watch.live();
        for (size_t i = 0; i < 10000; i++)
            std::free(blocks[i * 7919 % 10000]);
        left = watch.live();
    }
    EXPECT_EQ(live, 10000U);
    EXPECT_EQ(left, 0U);
}

}  // namespace
