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
    const unsigned char* begin() const { return at_; }
    const unsigned char* end() const { return end_; }
    BENCH_INLINE bool at_end() const { return at_ == end_; }
    BENCH_INLINE bool next_is(unsigned char tag) const { return at_ != end_ && *at_ == tag; }

    // contents reads the next value's tag and length, gives its contents and goes behind them.
    BENCH_INLINE bool contents(unsigned char tag, reader& in) {
        if (length() < 2 || at_[0] != tag) return false;
        const unsigned char* begin = at_ + 2;
        size_t n = at_[1];
        if (n >= 0x80) {
            const size_t count = n - 0x80;
            if (count - 1 >= 4 || count > length() - 2) return false;
            n = length() >= 6 ? load(begin) >> (32 - 8 * count) : last_length(begin, count);
            begin += count;
        }
        if (n > static_cast<size_t>(end_ - begin)) return false;
        in.at_ = begin;
        in.end_ = at_ = begin + n;
        return true;
    }

    // count_values gives the number of values ahead.
    BENCH_INLINE bool count_values(size_t& count) const {
        reader ahead(*this), in;
        for (count = 0; !ahead.at_end(); ++count)
            if (!ahead.contents(*ahead.at_, in)) return false;
        return true;
    }

    BENCH_INLINE bool integer(int32_t& value) {
        const size_t left = length();
        if (left < 3 || at_[0] != tag_integer) return false;
        const size_t n = at_[1];
        if (n - 1 >= sizeof(uint32_t) || n > left - 2) return wide_integer(value);
        at_ += 2 + n;
        // At least the envelope and a tag lie before the contents, so this may begin in front of them.
        const size_t unused = 32 - 8 * n;
        value = static_cast<int32_t>(load(at_ - 4) << unused) >> unused;
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
        static_assert(N < 0x80);
        if (length() < 2 + N || at_[0] != tag_octets || at_[1] != N) return false;
        std::memcpy(data, at_ + 2, N);
        at_ += 2 + N;
        return true;
    }

    // integers reads INTEGERs until the end, `most` at most, and gives their number.
    BENCH_INLINE bool integers(int32_t* values, size_t most, size_t& number) {
        for (number = 0; number < most && !at_end(); ++number)
            if (!integer(values[number])) return false;
        return true;
    }

private:
    // Five octets, of which the first is 0: an unsigned number.
    BENCH_INLINE bool wide_integer(int32_t& value) {
        if (length() < 7 || at_[1] != 5 || at_[2] != 0) return false;
        value = static_cast<int32_t>(load(at_ + 3));
        at_ += 7;
        return true;
    }

    BENCH_INLINE static uint32_t load(const unsigned char* at) {
        uint32_t octets;
        std::memcpy(&octets, at, sizeof octets);
        return __builtin_bswap32(octets);
    }

    // A length of `count` octets (X.690, 8.1.3.5) behind which there is next to nothing.
    [[gnu::noinline]] static size_t last_length(const unsigned char* at, size_t count) {
        size_t n = 0;
        for (; count != 0; --count)
            n = n << 8 | *at++;
        return n;
    }

    const unsigned char* at_ = nullptr;
    const unsigned char* end_ = nullptr;
};

// get_list reads a SEQUENCE OF records into an array. `count` counts an element as soon as it may hold something.
template <class Count, class T, class... Context>
BENCH_INLINE bool get_list(reader& from, Count& count, T*& elements, Context... context) {
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
        if (!get(in, elements[i], context...)) return false;
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

// open gives what is behind the envelope.
BENCH_INLINE bool open(const zr_asn_buffer_t& in, reader& from) {
    if (in.length <= sizeof envelope || std::memcmp(in.data, envelope, sizeof envelope) != 0) return false;
    from = reader(in.data + sizeof envelope, in.length - sizeof envelope);
    return true;
}

// decode reads an enveloped record. When the octets are refused `out` is as it was.
template <class T>
[[gnu::noinline]] bool decode(const zr_asn_buffer_t& in, T& out) {
    reader from;
    if (!open(in, from)) return false;
    T record{};
    if (!get(from, record)) {
        release(record);
        return false;
    }
    out = record;
    return true;
}

}  // namespace bench
