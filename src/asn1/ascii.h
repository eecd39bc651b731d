// Whether octets are ASCII, eight or sixteen at a time.
#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zr {

inline uint64_t load_eight(const unsigned char* at) {
    uint64_t octets = 0;
    std::memcpy(&octets, at, sizeof octets);
    return octets;
}

// The octets of a word that are not ASCII have this bit set.
constexpr uint64_t high_bits_of_eight = 0x8080808080808080u;

// How many of eight octets come before the first one that is not ASCII; one at least must not be.
inline size_t ascii_before(uint64_t eight) {
    const uint64_t high = eight & high_bits_of_eight;
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return static_cast<size_t>(__builtin_clzll(high)) / 8;
#else
    return static_cast<size_t>(__builtin_ctzll(high)) / 8;
#endif
}

inline bool is_ascii(const void* octets, size_t count) {
    const auto* at = static_cast<const unsigned char*>(octets);
    if (count >= 8) {
        uint64_t all = load_eight(at + count - 8);  // the last eight, some of them twice
        for (; count > 8; count -= 8, at += 8) {
            all |= load_eight(at);
            if ((all & high_bits_of_eight) != 0) return false;
        }
        return (all & high_bits_of_eight) == 0;
    }
    unsigned int all = 0;
    for (; count != 0; --count)
        all |= *at++;
    return (all & 0x80) == 0;
}

// The first octet that is not ASCII; `end` when all are.
inline const unsigned char* first_above_ascii(const unsigned char* at, const unsigned char* end) {
#ifdef __SSE2__
    for (; end - at >= 16; at += 16) {
        __m128i sixteen;
        std::memcpy(&sixteen, at, sizeof sixteen);
        if (const int high = _mm_movemask_epi8(sixteen)) return at + __builtin_ctz(static_cast<unsigned int>(high));
    }
#endif
    for (; end - at >= 8; at += 8) {
        const uint64_t eight = load_eight(at);
        if ((eight & high_bits_of_eight) != 0) return at + ascii_before(eight);
    }
    while (at != end && *at < 0x80)
        ++at;
    return at;
}

// Answers for parts of a text, which are asked for from the front to the back, whether they are ASCII. No octet is
// looked at twice.
class ascii_parts {
public:
    explicit ascii_parts(const unsigned char* end) : end_(end) {}
    bool is_ascii(const unsigned char* at, const unsigned char* stop) {
        if (next_ < at) next_ = first_above_ascii(at, end_);
        return next_ >= stop;
    }

private:
    const unsigned char* end_;
    const unsigned char* next_ = nullptr;  // the first one that is not ASCII from where was asked last
};

}  // namespace zr
