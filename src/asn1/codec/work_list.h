// A stack of what is still to be done, for records that contain themselves: their depth is the data's, not the
// thread's. The first entries need no memory of their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "asn1/status.h"

namespace zr {

template <class Entry, size_t Inline = 12>
class work_list {
    static_assert(std::is_trivially_copyable_v<Entry>, "entries move by memcpy");

public:
    work_list() = default;
    work_list(const work_list&) = delete;
    work_list& operator=(const work_list&) = delete;
    ~work_list() {
        if (entries_ != inline_entries()) std::free(entries_);
    }

    bool empty() const { return count_ == 0; }
    size_t size() const { return count_; }
    // The entries from the one that was pushed first.
    const Entry* begin() const { return entries_; }
    const Entry* end() const { return entries_ + count_; }
    Entry& top() { return entries_[count_ - 1]; }
    void pop() { --count_; }
    // Throws zr_asn_memexception for `file`.
    void push(const Entry& entry, const char* file) {
        if (count_ == capacity_) grow(file);
        entries_[count_++] = entry;
    }

private:
    Entry* inline_entries() { return reinterpret_cast<Entry*>(storage_); }

    void grow(const char* file) {
        const bool on_heap = entries_ != inline_entries();
        const size_t capacity = capacity_ + capacity_ / 2;
        void* grown = capacity > SIZE_MAX / 2 / sizeof(Entry)
                          ? nullptr
                          : std::realloc(on_heap ? entries_ : nullptr, capacity * sizeof(Entry));
        if (grown == nullptr) throw_out_of_memory("ASN: Memory error", file);
        if (!on_heap) std::memcpy(grown, entries_, count_ * sizeof(Entry));
        entries_ = static_cast<Entry*>(grown);
        capacity_ = capacity;
    }

    alignas(Entry) unsigned char storage_[Inline * sizeof(Entry)];
    Entry* entries_ = inline_entries();
    size_t count_ = 0;
    size_t capacity_ = Inline;
};

}  // namespace zr
