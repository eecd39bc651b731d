// Watching and failing memory allocations. The test program is linked so that malloc, calloc, realloc and free, as
// called from the library and the tests, and operator new and delete, from wherever they are called, pass through here.
// (Memory that libstdc++ or the C library take for themselves with malloc, such as strdup's, does not.)
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zr_test {

// allocations watches from its construction to its destruction, on the thread that constructed it, and one at a time.
// Blocks are known by address: only those made while it watches count, and they count until they are freed while it
// watches. Its own records are kept outside what it counts.
class allocations {
public:
    allocations();
    ~allocations();
    allocations(const allocations&) = delete;
    allocations& operator=(const allocations&) = delete;

    // live is the number of blocks that were made and not yet freed.
    size_t live() const { return sizes_.size(); }
    // made is the number of requests that succeeded; a realloc counts as one.
    size_t made() const { return made_; }

    // peak is the most octets that the counted blocks had at once, as they were asked for; both of a block that moves.
    size_t peak() const { return peak_; }
    // restart_peak begins to look for the peak anew, and returns what the counted blocks have now.
    size_t restart_peak() { return peak_ = held_; }

    // fail_allocation makes the n-th request from now (1 is the next) fail, and all behind it when `for_ever`: malloc,
    // calloc, realloc and the nothrow operators give null, the others throw std::bad_alloc. 0 calls it off.
    void fail_allocation(size_t n, bool for_ever = false) {
        fail_in_ = n;
        for_ever_ = for_ever;
        failed_ = 0;
    }
    // failed tells how many requests have failed since: the end of a loop over n is the first n with none.
    size_t failed() const { return failed_; }

    // on_release names a function that is shown each block just before it is freed or handed to realloc, whether it was
    // made while watching or not: `size` is the size asked for where that is known, otherwise what the C library says
    // is usable. The function must not allocate through the library, and what it allocates itself is not counted.
    using inspector = void (*)(void* context, const void* block, size_t size);
    void on_release(inspector inspect, void* context) {
        inspect_ = inspect;
        context_ = context;
    }

private:
    friend struct allocation_hooks;

    // What the records themselves take, past the functions that are watched.
    template <class T>
    struct unwatched_memory {
        using value_type = T;
        unwatched_memory() = default;
        template <class U>
        unwatched_memory(const unwatched_memory<U>&) {}
        T* allocate(size_t count) { return static_cast<T*>(take_unwatched(count * sizeof(T))); }
        void deallocate(T* block, size_t) { give_unwatched(block); }
        bool operator==(const unwatched_memory&) const { return true; }
        bool operator!=(const unwatched_memory&) const { return false; }
    };
    static void* take_unwatched(size_t size);
    static void give_unwatched(void* block);

    std::unordered_map<const void*, size_t, std::hash<const void*>, std::equal_to<const void*>,
                       unwatched_memory<std::pair<const void* const, size_t>>>
        sizes_;  // of the blocks that are live
    size_t made_ = 0;
    size_t held_ = 0;  // octets
    size_t peak_ = 0;
    size_t fail_in_ = 0;
    size_t failed_ = 0;
    bool for_ever_ = false;
    bool busy_ = false;  // inside the inspector
    inspector inspect_ = nullptr;
    void* context_ = nullptr;
};

// secret_search counts the blocks that hold one of some secrets when they are released or moved, while it lives.
class secret_search {
public:
    explicit secret_search(std::vector<std::string_view> secrets) : secrets_(std::move(secrets)) {
        watched_.on_release(
            [](void* context, const void* block, size_t size) {
                auto& search = *static_cast<secret_search*>(context);
                const std::string_view octets(static_cast<const char*>(block), size);
                for (const std::string_view secret : search.secrets_)
                    if (octets.find(secret) != octets.npos) ++search.found_;
            },
            this);
    }

    size_t found() const { return found_; }

private:
    std::vector<std::string_view> secrets_;
    size_t found_ = 0;
    allocations watched_;
};

}  // namespace zr_test
