// Writing BER backwards, from the end of a block towards its start, so that every length is known when it is written.
//
// Two sinks share one interface: writer puts octets into a block, counter only counts them.
#pragma once

#include <cstdint>
#include <cstring>

#include "asn1/record/copy.h"
#include "asn1/record/identifiers.h"

namespace zr {

// The most octets that a header (identifier and length) and an INTEGER take.
constexpr size_t max_header = 6;
constexpr size_t max_integer = 6;

// How many contents octets an INTEGER has, 1 to 4: as few as hold the value and its sign.
inline unsigned int integer_octets(int32_t value) {
    const auto magnitude = static_cast<uint32_t>(value ^ (value >> 31));
    return (32u - static_cast<unsigned int>(__builtin_clz(magnitude | 1))) / 8 + 1;
}

// How many length octets follow the first, 0 for the short form.
inline unsigned int length_octets(uint64_t length) {
    if (length < 0x80) return 0;
    return length <= 0xFF ? 1 : length <= 0xFFFF ? 2 : length <= 0xFFFFFF ? 3 : 4;
}

// writer fills a block from its end. Callers ask room() before they write; with a block of exactly the counted size
// they may do without: `limit` 0 makes every room() hold.
class writer {
public:
    writer(unsigned char* end, unsigned char* limit) : at_(end), limit_(reinterpret_cast<uintptr_t>(limit)) {}

    // Whether `octets` and then `reserve` more fit.
    bool room(size_t octets, size_t reserve = 0) {
        const size_t left = reinterpret_cast<uintptr_t>(at_) - limit_;
        if (left >= octets && left - octets >= reserve) return true;
        at_ = nullptr;
        limit_ = 0;
        return false;
    }
    bool failed() const { return at_ == nullptr; }

    // What a function that has been handed the sink gives back: one register. A writer that failed gives null.
    using progress = unsigned char*;
    progress done() const { return at_; }
    void go_on(progress from) {
        at_ = from;
        if (from == nullptr) limit_ = 0;
    }

    // A position to measure from, and the octets written since.
    using mark = unsigned char*;
    mark position() const { return at_; }
    size_t since(mark from) const { return static_cast<size_t>(from - at_); }
    unsigned char* start() const { return at_; }

    void octets(const void* from, size_t count) {
        at_ -= count;
        copy_octets(at_, from, count);
    }
    void octet_pair(unsigned char first, unsigned char second) {
        const auto both = static_cast<uint16_t>(first | second << 8);
        std::memcpy(at_ -= 2, &both, 2);
    }
    void header(unsigned char identifier, size_t length) {
        if (length < 0x80) return octet_pair(identifier, static_cast<unsigned char>(length));
        long_header(identifier, static_cast<uint32_t>(length));
    }
    // Stores four octets whatever the value takes: what lies before the contents is written later. At least the two
    // octets of a header always do.
    void integer(int32_t value) {
        const unsigned int count = integer_octets(value);
        const uint32_t stored = __builtin_bswap32(static_cast<uint32_t>(value));
        std::memcpy(at_ - 4, &stored, 4);
        at_ -= count;
        octet_pair(id_integer, static_cast<unsigned char>(count));
    }

private:
    // As with integers, four octets are stored whatever the length takes: the identifier, the first length octet and,
    // at the least, the envelope's header still come before them.
    void long_header(unsigned char identifier, uint32_t length) {
        const unsigned int count = 4 - static_cast<unsigned int>(__builtin_clz(length)) / 8;
        const uint32_t stored = __builtin_bswap32(length);
        std::memcpy(at_ - 4, &stored, 4);
        at_ -= count;
        octet_pair(identifier, static_cast<unsigned char>(0x80 | count));
    }

    unsigned char* at_;
    uintptr_t limit_;
};

// counter has the writer's interface and tells how many octets it would write.
class counter {
public:
    bool room(size_t, size_t = 0) const { return true; }
    bool failed() const { return false; }
    using progress = uint64_t;
    progress done() const { return count_; }
    void go_on(progress from) { count_ = from; }
    using mark = uint64_t;
    mark position() const { return count_; }
    uint64_t since(mark from) const { return count_ - from; }
    uint64_t count() const { return count_; }

    void octets(const void*, size_t count) { count_ += count; }
    void octet_pair(unsigned char, unsigned char) { count_ += 2; }
    void header(unsigned char, uint64_t length) { count_ += 2 + length_octets(length); }
    void integer(int32_t value) { count_ += 2 + integer_octets(value); }

private:
    uint64_t count_ = 0;
};

}  // namespace zr
