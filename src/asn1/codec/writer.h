// Writing BER backwards, from the end of a block towards its start, so that every length is known when it is written.
//
// Sinks share one interface: writer puts octets into a block, counter only counts them, local_writer
// (asn1/codec/local_writer.h) is a writer that converts texts.
#pragma once

#include <cstdint>

#include "asn1/ber.h"
#include "asn1/codec/copy.h"
#include "asn1/envelope.h"
#include "asn1/load.h"

namespace zr {

// The most octets that a header takes, identifier and length of up to 2^32-1 (X.690 8.1.3.5), and that an INTEGER of 32
// bits takes with its header.
constexpr size_t max_header = 6;
constexpr size_t max_integer = 6;

// The place of the highest bit that is set, counted from 0. At least one bit must be set.
inline size_t highest_bit(uint32_t bits) { return static_cast<size_t>(31 - __builtin_clz(bits)); }

// How many contents octets an INTEGER has, 1 to 4: as few as hold the value and its sign (X.690 8.3.2).
inline size_t integer_octets(int32_t value) {
    const auto magnitude = static_cast<uint32_t>(value ^ (value >> 31));
    size_t count = 1;
    count += magnitude >= 0x80;
    count += magnitude >= 0x8000;
    count += magnitude >= 0x800000;
    return count;
}

// How many length octets follow the first of the long form, for a length of 1 to 2^32-1.
inline size_t length_octets(uint32_t length) { return (highest_bit(length) + 8) / 8; }

// writer fills a block from its end. Callers ask room() before they write; with a block of exactly the counted size
// they may do without: `limit` 0 makes every room() hold.
class writer {
public:
    writer(unsigned char* end, unsigned char* limit) : at_(end), limit_(reinterpret_cast<uintptr_t>(limit)) {}

    // Whether so many more octets fit. Sums of lengths are 64 bits wide, lest they overflow.
    bool room(uint64_t octets) {
        if (has_room(octets)) return true;
        at_ = nullptr;
        limit_ = 0;
        return false;
    }
    bool failed() const { return at_ == nullptr; }

    // A function that is handed the sink by value gives back what fits into one register: how far it has come. A writer
    // that failed gives null.
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

    ZR_INLINE void octets(const void* from, size_t count) {
        at_ -= count;
        copy_octets(at_, from, count);
    }
    ZR_INLINE void string(unsigned char identifier, const void* contents, size_t length) {
        octets(contents, length);
        header(identifier, length);
    }
    // Writes one of the texts of a list, whose lengths are hard to foresee.
    ZR_INLINE void list_text(const char* text, size_t length) {
        at_ -= length;
        copy_varied(at_, text, length);
        header(id_utf8_string, length);
    }
    ZR_INLINE void octet_pair(unsigned char first, unsigned char second) {
        store(at_ -= 2, pair_of_octets(first, second));
    }
    ZR_INLINE void header(unsigned char identifier, size_t length) {
        if (length < 0x80) return octet_pair(identifier, static_cast<unsigned char>(length));
        long_header(identifier, static_cast<uint32_t>(length));
    }
    // Stores four octets whatever the value takes: what lies before the contents is written later. At least the two
    // octets of a header always do.
    ZR_INLINE void integer(int32_t value) {
        const size_t count = integer_octets(value);
        store(at_ - 4, most_significant_first(static_cast<uint32_t>(value)));
        at_ -= count;
        octet_pair(id_integer, static_cast<unsigned char>(count));
    }

    // Writes integers from the last to the first. False when they do not fit.
    template <class T>
    bool integers(const T* values, size_t count) {
        if (has_room(uint64_t{count} * max_integer)) {
            for (; count != 0; --count)
                integer(static_cast<int32_t>(values[count - 1]));
            return true;
        }
        for (; count != 0; --count) {
            if (!room(max_integer)) return false;
            integer(static_cast<int32_t>(values[count - 1]));
        }
        return true;
    }

protected:
    // How many octets still fit.
    uintptr_t left() const { return reinterpret_cast<uintptr_t>(at_) - limit_; }

private:
    bool has_room(uint64_t octets) const { return left() >= octets; }

    // As with integers, four octets are stored whatever the length takes: the identifier, the first length octet and,
    // at the least, the envelope's header still come before them.
    ZR_INLINE void long_header(unsigned char identifier, uint32_t length) {
        const size_t count = length_octets(length);
        store(at_ - 4, most_significant_first(length));
        at_ -= count;
        octet_pair(identifier, static_cast<unsigned char>(0x80 | count));
    }

    unsigned char* at_;
    uintptr_t limit_;
};

// Writes the envelope's header before what the writer has; false when there is no room.
inline bool write_envelope_header(writer& sink, int version = envelope_version) {
    unsigned char header[envelope_header_octets];
    put_envelope_header(header, version);
    if (!sink.room(sizeof header)) return false;
    sink.octets(header, sizeof header);
    return true;
}

// The octets of a value whose contents take so many. Contents that do not fit 32 bits make the encoding too long,
// whatever is counted for their header.
inline uint64_t with_header(uint64_t contents) {
    return contents + 2 + (contents < 0x80 ? 0 : length_octets(static_cast<uint32_t>(contents) | 0x80));
}

// counter has the writer's interface and tells how many octets it would write.
class counter {
public:
    bool room(uint64_t) const { return true; }
    bool failed() const { return false; }
    using progress = uint64_t;
    progress done() const { return count_; }
    void go_on(progress from) { count_ = from; }
    using mark = uint64_t;
    mark position() const { return count_; }
    uint64_t since(mark from) const { return count_ - from; }

    ZR_INLINE void string(unsigned char identifier, const void*, size_t length) {
        count_ += length;
        header(identifier, length);
    }
    ZR_INLINE void list_text(const char*, size_t length) { count_ += with_header(length); }
    ZR_INLINE void octet_pair(unsigned char, unsigned char) { count_ += 2; }
    ZR_INLINE void header(unsigned char, uint64_t length) { count_ += with_header(length) - length; }
    ZR_INLINE void integer(int32_t value) { count_ += 2 + integer_octets(value); }
    template <class T>
    bool integers(const T* values, size_t count) {
        static_assert(sizeof(T) == sizeof(int32_t));
        count_ += 2 * uint64_t{count};
#ifdef __SSE2__
        // Four at a time: a comparison that holds is -1.
        using four = int32_t __attribute__((vector_size(16)));
        for (; count >= 4; count -= 4) {
            const auto value = load<four>(values + count - 4);
            const four magnitude = value ^ (value >> 31);
            const four extra = (magnitude > 0x7F) + (magnitude > 0x7FFF) + (magnitude > 0x7FFFFF);
            const four all = 1 - extra;
            count_ += static_cast<uint32_t>(all[0] + all[1] + all[2] + all[3]);
        }
#endif
        for (; count != 0; --count)
            count_ += integer_octets(static_cast<int32_t>(values[count - 1]));
        return true;
    }

private:
    uint64_t count_ = 0;
};

}  // namespace zr
