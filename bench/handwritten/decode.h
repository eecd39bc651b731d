// The parts that hand-written decoders are made of. They take definite lengths only, and compare every one with the
// octets that are there. A record that is refused half way holds nothing but what its release function releases.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/zr_asn_buffer.h"
#include "bench/handwritten/blocks.h"
#include "bench/handwritten/encode.h"

namespace bench {

class reader {
public:
    reader() = default;
    reader(const unsigned char* data, size_t length) : at_(data), end_(data + length) {}

    BENCH_INLINE size_t length() const { return static_cast<size_t>(end_ - at_); }
    BENCH_INLINE bool at_end() const { return at_ == end_; }
    BENCH_INLINE bool next_is(unsigned char tag) const { return at_ != end_ && *at_ == tag; }

    // contents reads the next value's tag and length, gives its contents and goes behind them.
    BENCH_INLINE bool contents(unsigned char tag, reader& in) {
        size_t n;
        if (length() < 2 || at_[0] != tag) return false;
        if (at_[1] < 0x80) {
            n = at_[1];
            at_ += 2;
        } else if (!long_length(at_, end_, n)) {
            return false;
        }
        if (n > length()) return false;
        in.at_ = at_;
        in.end_ = at_ += n;
        in.levels_ = levels_;
        return true;
    }

    // descend counts a record that may contain itself: no more than so many may lie in each other.
    BENCH_INLINE bool descend() { return levels_-- != 0; }

    // count_values gives the number of values ahead.
    BENCH_INLINE bool count_values(size_t& count) const {
        reader ahead(*this), in;
        for (count = 0; !ahead.at_end(); ++count)
            if (!ahead.contents(*ahead.at_, in)) return false;
        return true;
    }

    BENCH_INLINE bool integer(int32_t& value) {
        reader in;
        if (!contents(tag_integer, in)) return false;
        const size_t n = in.length();
        if (n == 0 || n > 5 || (n == 5 && *in.at_ != 0)) return false;
        if (static_cast<size_t>(end_ - in.at_) >= sizeof(uint64_t)) {
            uint64_t window;
            std::memcpy(&window, in.at_, sizeof window);
            window = __builtin_bswap64(window);
            value = static_cast<int32_t>(static_cast<int64_t>(window) >> (64 - 8 * n));
        } else {
            uint32_t bits = *in.at_ < 0x80 ? 0 : UINT32_MAX;
            for (size_t i = 0; i < n; ++i)
                bits = bits << 8 | in.at_[i];
            value = static_cast<int32_t>(bits);
        }
        return true;
    }
    template <class T>
    BENCH_INLINE bool integer(T& value) {
        int32_t whole;
        if (!integer(whole)) return false;
        value = static_cast<T>(whole);
        return true;
    }

    BENCH_INLINE bool text(char*& value) {
        reader in;
        if (!contents(tag_text, in)) return false;
        const size_t n = in.length();
        value = static_cast<char*>(std::malloc(n + 1));
        if (value == nullptr) return false;
        copy(reinterpret_cast<unsigned char*>(value), in.at_, n);
        value[n] = 0;
        return true;
    }

    BENCH_INLINE bool octets(uint32_t& length, unsigned char*& data) {
        reader in;
        if (!contents(tag_octets, in)) return false;
        const size_t n = in.length();
        if (n == 0) return true;
        data = static_cast<unsigned char*>(std::malloc(n));
        if (data == nullptr) return false;
        copy(data, in.at_, n);
        length = static_cast<uint32_t>(n);
        return true;
    }
    template <size_t N>
    BENCH_INLINE bool octets(unsigned char (&data)[N]) {
        reader in;
        if (!contents(tag_octets, in) || in.length() != N) return false;
        std::memcpy(data, in.at_, N);
        return true;
    }

private:
    // Two to four octets of length behind the tag (X.690, 8.1.3.5).
    [[gnu::noinline]] static bool long_length(const unsigned char*& at, const unsigned char* end, size_t& n) {
        const size_t count = at[1] & 0x7F;
        if (count == 0 || count > 4 || count > static_cast<size_t>(end - at) - 2) return false;
        n = 0;
        for (size_t i = 0; i < count; ++i)
            n = n << 8 | at[2 + i];
        at += 2 + count;
        return true;
    }

    const unsigned char* at_ = nullptr;
    const unsigned char* end_ = nullptr;
    unsigned levels_ = 1000;
};

// get_list reads a SEQUENCE OF records into an array. `count` counts an element as soon as it may hold something.
template <class Count, class T>
BENCH_INLINE bool get_list(reader& from, Count& count, T*& elements) {
    reader in;
    size_t number;
    if (!from.contents(tag_sequence, in) || !in.count_values(number)) return false;
    if (number == 0) return true;
    if (number > static_cast<Count>(-1)) return false;
    elements = static_cast<T*>(std::malloc(number * sizeof(T)));
    if (elements == nullptr) return false;
    for (size_t i = 0; i < number; ++i) {
        elements[i] = T();
        count = static_cast<Count>(i + 1);
        if (!get(in, elements[i])) return false;
    }
    return true;
}

// release releases the blocks of a record.
template <class T>
[[gnu::noinline]] void release(T& record) {
    releaser visit;
    blocks(visit, record);
    record = T();
}

// decode reads an enveloped record. When the octets are refused `out` is as it was.
template <class T>
[[gnu::noinline]] bool decode(const zr_asn_buffer_t& in, T& out) {
    if (in.length <= sizeof envelope || std::memcmp(in.data, envelope, sizeof envelope) != 0) return false;
    reader from(in.data + sizeof envelope, in.length - sizeof envelope);
    T record{};
    if (!get(from, record)) {
        release(record);
        return false;
    }
    out = record;
    return true;
}

}  // namespace bench
