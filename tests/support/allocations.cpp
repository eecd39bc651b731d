#include "support/allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

// The linker's --wrap sends the calls of malloc to __wrap_malloc, and those of __real_malloc to the C library's.
extern "C" {
void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);
void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void* __wrap_realloc(void* block, size_t size);
void __wrap_free(void* block);
}

namespace zr_test {

static thread_local allocations* watching = nullptr;

[[noreturn]] static void give_up(const char* why) {
    std::fprintf(stderr, "allocations: %s\n", why);
    std::abort();
}

allocations::allocations() {
    if (watching != nullptr) give_up("one is watching already");
    watching = this;
}

allocations::~allocations() { watching = nullptr; }

void* allocations::take_unwatched(size_t size) {
    void* block = __real_malloc(size);
    if (block == nullptr) give_up("no memory for records");
    return block;
}

void allocations::give_unwatched(void* block) { __real_free(block); }

// What the replaced functions ask. Each does nothing while nobody watches on this thread.
struct allocation_hooks {
    static allocations* active() { return watching != nullptr && !watching->busy_ ? watching : nullptr; }

    static bool fails() {
        allocations* a = active();
        if (a == nullptr || a->fail_in_ == 0) return false;
        if (--a->fail_in_ != 0) return false;
        if (a->for_ever_) a->fail_in_ = 1;  // the next one too
        ++a->failed_;
        return true;
    }

    static void* made(void* block, size_t size) {
        allocations* a = active();
        if (a != nullptr && block != nullptr) {
            a->made_++;
            a->sizes_[block] = size;
            a->held_ += size;
            a->peak_ = std::max(a->peak_, a->held_);
        }
        return block;
    }

    static void inspect(void* block) {
        allocations* a = active();
        if (a == nullptr || block == nullptr || a->inspect_ == nullptr) return;
        const auto known = a->sizes_.find(block);
        a->busy_ = true;
        a->inspect_(a->context_, block, known != a->sizes_.end() ? known->second : malloc_usable_size(block));
        a->busy_ = false;
    }

    static void gone(const void* block) {
        allocations* a = active();
        if (a == nullptr) return;
        const auto known = a->sizes_.find(block);
        if (known == a->sizes_.end()) return;
        a->held_ -= known->second;
        a->sizes_.erase(known);
    }
};

using hooks = allocation_hooks;

static void* take(size_t size) { return hooks::fails() ? nullptr : hooks::made(__real_malloc(size), size); }

static void* take_or_throw(size_t size) {
    if (void* block = take(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

static void release(void* block) {
    hooks::inspect(block);
    hooks::gone(block);
    __real_free(block);
}

}  // namespace zr_test

using zr_test::hooks;

void* __wrap_malloc(size_t size) { return zr_test::take(size); }

void* __wrap_calloc(size_t count, size_t size) {
    return hooks::fails() ? nullptr : hooks::made(__real_calloc(count, size), count * size);
}

// When nothing is moved because memory ends, the old block stays known. The inspector is asked before that is known;
// a failure that was asked for comes first.
void* __wrap_realloc(void* block, size_t size) {
    if (hooks::fails()) return nullptr;
    hooks::inspect(block);
    void* moved = __real_realloc(block, size);
    if (moved == nullptr && size != 0) return nullptr;
    // One that moves was there twice for a while.
    if (moved != block) hooks::made(moved, size);
    hooks::gone(block);
    if (moved == block) hooks::made(moved, size);
    return moved;
}

void __wrap_free(void* block) { zr_test::release(block); }

void* operator new(size_t size) { return zr_test::take_or_throw(size); }
void* operator new[](size_t size) { return zr_test::take_or_throw(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return zr_test::take(size == 0 ? 1 : size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return zr_test::take(size == 0 ? 1 : size); }
void operator delete(void* block) noexcept { zr_test::release(block); }
void operator delete[](void* block) noexcept { zr_test::release(block); }
void operator delete(void* block, size_t) noexcept { zr_test::release(block); }
void operator delete[](void* block, size_t) noexcept { zr_test::release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { zr_test::release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { zr_test::release(block); }
