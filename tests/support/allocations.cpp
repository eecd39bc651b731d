#include "support/allocations.h"

#include <malloc.h>

#include <cstdint>
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

struct allocations::record {
    const void* block;  // null: free place
    size_t size;
};

[[noreturn]] static void give_up(const char* why) {
    std::fprintf(stderr, "allocations: %s\n", why);
    std::abort();
}

static size_t place_of(const void* block, size_t capacity) {
    return static_cast<size_t>((reinterpret_cast<uintptr_t>(block) >> 3) * 2654435761U) & (capacity - 1);
}

allocations::allocations() {
    if (watching != nullptr) give_up("one is watching already");
    grow();
    watching = this;
}

allocations::~allocations() {
    watching = nullptr;
    __real_free(table_);
}

// find gives the record of `block`, or the free place where it would go.
allocations::record* allocations::find(const void* block) const {
    size_t place = place_of(block, capacity_);
    while (table_[place].block != nullptr && table_[place].block != block)
        place = (place + 1) & (capacity_ - 1);
    return &table_[place];
}

void allocations::grow() {
    size_t old_capacity = capacity_;
    record* old = table_;
    capacity_ = old_capacity == 0 ? 1024 : old_capacity * 2;
    table_ = static_cast<record*>(__real_calloc(capacity_, sizeof(record)));
    if (table_ == nullptr) give_up("no memory for records");
    for (size_t i = 0; i < old_capacity; i++)
        if (old[i].block != nullptr) *find(old[i].block) = old[i];
    __real_free(old);
}

void allocations::add(const void* block, size_t size) {
    if ((live_ + 1) * 2 > capacity_) grow();
    record* place = find(block);
    if (place->block == nullptr) live_++;
    *place = {block, size};
    held_ += size;
    if (held_ > peak_) peak_ = held_;
}

// remove closes the gap, so that no search ends early: what follows in the same run is put in again.
void allocations::remove(const void* block) {
    record* found = find(block);
    if (found->block == nullptr) return;
    held_ -= found->size;
    found->block = nullptr;
    live_--;
    for (size_t i = static_cast<size_t>(found - table_ + 1) & (capacity_ - 1); table_[i].block != nullptr;
         i = (i + 1) & (capacity_ - 1)) {
        record moved = table_[i];
        table_[i].block = nullptr;
        *find(moved.block) = moved;
    }
}

// What the replaced functions ask. Each does nothing while nobody watches on this thread.
struct allocation_hooks {
    static allocations* active() { return watching != nullptr && !watching->busy_ ? watching : nullptr; }

    static bool fails() {
        allocations* a = active();
        if (a == nullptr || a->fail_in_ == 0 || --a->fail_in_ != 0) return false;
        a->failed_ = true;
        return true;
    }

    static void* made(void* block, size_t size) {
        allocations* a = active();
        if (a != nullptr && block != nullptr) {
            a->made_++;
            a->add(block, size);
        }
        return block;
    }

    static void inspect(void* block) {
        allocations* a = active();
        if (a == nullptr || block == nullptr || a->inspect_ == nullptr) return;
        allocations::record* known = a->find(block);
        a->busy_ = true;
        a->inspect_(a->context_, block, known->block != nullptr ? known->size : malloc_usable_size(block));
        a->busy_ = false;
    }

    static void gone(const void* block) {
        allocations* a = active();
        if (a != nullptr && block != nullptr) a->remove(block);
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
