// The blocks that a decoded record consists of, in the order in which they are allocated and released. A record's
// blocks are named by one function template over a visitor: block(p) stands for a block without blocks of its own,
// enter(p) and leave(p) for one that is allocated before and released after the blocks that it points to.
#pragma once

#include <malloc.h>

#include <cstdlib>
#include <unordered_map>
#include <vector>

#include "bench/handwritten/encode.h"

namespace bench {

class releaser {
public:
    BENCH_INLINE void block(void* p) { std::free(p); }
    BENCH_INLINE void enter(void*) {}
    BENCH_INLINE void leave(void* p) { std::free(p); }
};

template <class Visitor, class T>
BENCH_INLINE void list_blocks(Visitor& visit, size_t count, T* elements) {
    visit.enter(elements);
    for (size_t i = 0; i < count; ++i)
        blocks(visit, elements[i]);
    visit.leave(elements);
}

// touch writes to every page of a block that is so large that it comes fresh from the system: there an allocator alone
// would do nothing.
inline void touch(void* block, size_t size) {
    constexpr size_t large = 128 * 1024, page = 4096;
    if (size < large) return;
    for (size_t at = 0; at < size; at += page)
        static_cast<volatile char*>(block)[at] = 0;
}

// allocate_once is the floor of an encoder.
inline void allocate_once(size_t length) {
    void* block = std::malloc(length);
    asm volatile("" : : "r"(block) : "memory");
    touch(block, length);
    std::free(block);
}

// floor_of allocates and releases the blocks of a record and does nothing else.
class floor_of {
public:
    void block(void* p) {
        enter(p);
        leave(p);
    }
    void enter(void* p) {
        if (p == nullptr) return;
        place_[p] = sizes_.size();
        sizes_.push_back(malloc_usable_size(p));
    }
    void leave(void* p) {
        if (p != nullptr) order_.push_back(place_.at(p));
    }

    void run() {
        blocks_.resize(sizes_.size());
        for (size_t i = 0; i < sizes_.size(); ++i)
            touch(blocks_[i] = std::malloc(sizes_[i]), sizes_[i]);
        for (const size_t i : order_)
            std::free(blocks_[i]);
    }

private:
    std::unordered_map<void*, size_t> place_;
    std::vector<size_t> sizes_;
    std::vector<size_t> order_;
    std::vector<void*> blocks_;
};

// Reads the first octet of every block: what is in no cache has to come at least once.
class toucher {
public:
    void block(const void* p) { enter(p); }
    void enter(const void* p) {
        if (p != nullptr) sum_ += *static_cast<const unsigned char*>(p);
    }
    void leave(const void*) {}
    const unsigned& sum() const { return sum_; }

private:
    unsigned sum_ = 0;
};

}  // namespace bench
