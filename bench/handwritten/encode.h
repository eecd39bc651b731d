// The parts that hand-written encoders are made of. A record is written by one function template, its fields from last
// to first, over a sink: the writers put octets in front of those that are already there, `measure` only counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "asn1/zr_asn_buffer.h"

#define BENCH_INLINE [[gnu::always_inline]] inline

namespace bench {

constexpr unsigned char envelope[4] = {4, 2, 0xAC, 0xDC};
enum : unsigned char { tag_integer = 0x02, tag_octets = 0x04, tag_text = 0x0C, tag_sequence = 0x30 };

// The most that an INTEGER of 32 bits, and a tag with its length, take.
constexpr size_t integer_room = 6;
constexpr size_t header_room = 6;

// Both ends of `n` octets, which overlap when n is less than two Parts.
template <class Part>
BENCH_INLINE void copy_ends(unsigned char* to, const unsigned char* from, size_t n) {
    Part first, last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + n - sizeof last, sizeof last);
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + n - sizeof last, &last, sizeof last);
}

// memcpy, always as a call: where there are no vectors gcc writes a string instruction in its place, which is slow.
void* called_memcpy(void* to, const void* from, size_t n) asm("memcpy");

#ifdef __SSE2__
constexpr bool vectors = true;
#else
constexpr bool vectors = false;
#endif

// copy is memcpy without the call when the octets are few.
BENCH_INLINE void copy(unsigned char* to, const void* from, size_t n) {
    struct sixteen {
        uint64_t parts[2];
    };
    struct thirty_two {
        uint64_t parts[4];
    };
    const auto* at = static_cast<const unsigned char*>(from);
    if (n > (vectors ? 64 : 16)) {
        called_memcpy(to, at, n);
    } else if (vectors && n > 32) {
        copy_ends<thirty_two>(to, at, n);
    } else if (vectors && n >= 16) {
        copy_ends<sixteen>(to, at, n);
    } else if (n >= 8) {
        copy_ends<uint64_t>(to, at, n);
    } else if (n >= 4) {
        copy_ends<uint32_t>(to, at, n);
    } else if (n != 0) {
        to[0] = at[0];
        to[n / 2] = at[n / 2];
        to[n - 1] = at[n - 1];
    }
}

// The octets of an INTEGER's contents (X.690, 8.3.2).
BENCH_INLINE size_t integer_length(int32_t value) {
    const auto magnitude = static_cast<uint32_t>(value ^ (value >> 31));
    return (static_cast<size_t>(31 - __builtin_clz(magnitude | 1)) + 9) / 8;
}

// A text and its length, which is measured once.
struct measured {
    BENCH_INLINE explicit measured(const char* text) : chars(text), length(text == nullptr ? 0 : std::strlen(text)) {}
    const char* chars;
    size_t length;
};

// writer fills a block that is known to be long enough.
class writer {
public:
    using mark = unsigned char*;

    explicit writer(unsigned char* end) : at_(end) {}

    BENCH_INLINE bool room(size_t) { return true; }
    // A function that is not inlined takes the writer by value and returns here(), with which its caller goes on: so
    // both have what they work on in registers.
    BENCH_INLINE mark here() const { return at_; }
    BENCH_INLINE void go_on(mark at) { at_ = at; }
    // header closes what was written since `end`, as the contents of one value.
    BENCH_INLINE void header(unsigned char tag, mark end) { header(tag, static_cast<size_t>(end - at_)); }

    // The octets in front of an INTEGER's own are overwritten, and put right by what is written next.
    BENCH_INLINE void integer(int32_t value) {
        const size_t length = integer_length(value);
        const uint32_t contents = __builtin_bswap32(static_cast<uint32_t>(value));
        std::memcpy(at_ - sizeof contents, &contents, sizeof contents);
        at_ -= length;
        header(tag_integer, length);
    }
    BENCH_INLINE void text(const measured& value) { contents(tag_text, value.chars, value.length); }
    BENCH_INLINE void octets(const unsigned char* data, size_t length) { contents(tag_octets, data, length); }
    BENCH_INLINE void raw(const unsigned char* data, size_t length) {
        at_ -= length;
        copy(at_, data, length);
    }

private:
    BENCH_INLINE void contents(unsigned char tag, const void* data, size_t length) {
        at_ -= length;
        copy(at_, data, length);
        header(tag, length);
    }
    BENCH_INLINE void header(unsigned char tag, size_t length) {
        if (length < 0x80) {
            const auto both = static_cast<uint16_t>(tag | length << 8);
            std::memcpy(at_ -= sizeof both, &both, sizeof both);
        } else {
            at_ = long_header(at_, tag, length);
        }
    }
    // The octets in front of a short length are overwritten, as those of an INTEGER are.
    BENCH_INLINE static unsigned char* long_header(unsigned char* at, unsigned char tag, size_t length) {
        const auto bits = static_cast<uint32_t>(length);
        const size_t count = (static_cast<size_t>(31 - __builtin_clz(bits)) + 8) / 8;
        const uint32_t octets = __builtin_bswap32(bits);
        std::memcpy(at - sizeof octets, &octets, sizeof octets);
        const auto both = static_cast<uint16_t>(tag | (0x80 | count) << 8);
        at -= count + sizeof both;
        std::memcpy(at, &both, sizeof both);
        return at;
    }

protected:
    unsigned char* at_;
};

// bounded_writer fills a block that may be too short.
class bounded_writer : public writer {
public:
    bounded_writer(unsigned char* begin, unsigned char* end) : writer(end), begin_(begin) {}

    // room says whether `n` more octets fit, without which nothing may be written. Once it has said no it says no
    // again. One octet in front of `begin` must exist.
    BENCH_INLINE bool room(size_t n) {
        if (static_cast<std::ptrdiff_t>(n) <= at_ - begin_) return true;
        at_ = begin_ - 1;
        return false;
    }
    bool full() const { return at_ < begin_; }

private:
    unsigned char* begin_;
};

class measure {
public:
    using mark = size_t;

    BENCH_INLINE bool room(size_t) { return true; }
    BENCH_INLINE mark here() const { return length_; }
    BENCH_INLINE void go_on(mark at) { length_ = at; }
    BENCH_INLINE void header(unsigned char, mark end) { length_ += header_length(length_ - end); }
    BENCH_INLINE void integer(int32_t value) { length_ += 2 + integer_length(value); }
    BENCH_INLINE void text(const measured& value) { length_ += value.length + header_length(value.length); }
    BENCH_INLINE void octets(const unsigned char*, size_t length) { length_ += length + header_length(length); }
    BENCH_INLINE void raw(const unsigned char*, size_t length) { length_ += length; }

private:
    BENCH_INLINE static size_t header_length(size_t length) {
        if (length < 0x80) return 2;
        return length < 0x100 ? 3 : length < 0x10000 ? 4 : length < 0x1000000 ? 5 : 6;
    }

    size_t length_ = 0;
};

// encode_twice measures the record and writes it into a block of just that size.
template <class T>
[[gnu::noinline]] bool encode_twice(zr_asn_buffer_t& out, const T& record) {
    measure size;
    put(size, record);
    const size_t length = size.here() + sizeof envelope;
    if (length > UINT32_MAX) return false;
    auto* block = static_cast<unsigned char*>(std::malloc(length));
    if (block == nullptr) return false;
    writer to(block + length);
    put(to, record);
    to.raw(envelope, sizeof envelope);
    out.length = static_cast<unsigned>(length);
    out.data = block;
    return true;
}

constexpr size_t scratch_octets = 0x10000;

// encode_once writes the record on the stack and copies it into a block of just its size; a record that is too long for
// that is encoded the other way.
template <size_t Scratch, class T>
[[gnu::noinline]] bool encode_once(zr_asn_buffer_t& out, const T& record) {
    unsigned char scratch[Scratch];
    unsigned char* const end = scratch + Scratch;
    bounded_writer to(scratch + sizeof envelope, end);
    put(to, record);
    if (to.full()) return encode_twice(out, record);
    to.raw(envelope, sizeof envelope);
    const auto length = static_cast<size_t>(end - to.here());
    auto* block = static_cast<unsigned char*>(std::malloc(length));
    if (block == nullptr) return false;
    called_memcpy(block, to.here(), length);
    out.length = static_cast<unsigned>(length);
    out.data = block;
    return true;
}

// The elements of a SEQUENCE OF that are records.
template <class Sink, class T>
BENCH_INLINE void put_list(Sink& to, const T* elements, size_t count) {
    const auto end = to.here();
    while (count != 0)
        put(to, elements[--count]);
    if (to.room(header_room)) to.header(tag_sequence, end);
}

}  // namespace bench
