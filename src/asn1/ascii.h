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

constexpr uint64_t eight_times(unsigned char octet) { return ~uint64_t{0} / 0xFF * octet; }
constexpr uint64_t high_bits_of_eight = eight_times(0x80);

// How many of eight octets come before the first one with its high bit set; one at least must have it.
inline size_t octets_before_high(uint64_t eight) {
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

// A sort of octets: of many at once it sets the high bit of each that is one.
struct above_ascii {
    static uint64_t marked(uint64_t eight) { return eight & high_bits_of_eight; }
#ifdef __SSE2__
    static __m128i marked(__m128i sixteen) { return sixteen; }
#endif
};

// Tells of parts of a text, which are asked for from the front to the back, whether there is no octet of a sort in
// them. No octet is looked at twice.
template <class Sort>
class parts_without {
public:
    explicit parts_without(const unsigned char* end) : end_(end) {}
    bool operator()(const unsigned char* at, const unsigned char* stop) {
        if (next_ < at) next_ = first(at);
        return next_ >= stop;
    }

private:
    const unsigned char* first(const unsigned char* at) const {
#ifdef __SSE2__
        for (; end_ - at >= 16; at += 16) {
            __m128i sixteen;
            std::memcpy(&sixteen, at, sizeof sixteen);
            if (const int found = _mm_movemask_epi8(Sort::marked(sixteen)))
                return at + __builtin_ctz(static_cast<unsigned int>(found));
        }
#endif
        for (; end_ - at >= 8; at += 8) {
            if (const uint64_t found = Sort::marked(load_eight(at))) return at + octets_before_high(found);
        }
        while (at != end_ && Sort::marked(uint64_t{*at} * eight_times(1)) == 0)
            ++at;
        return at;
    }

    const unsigned char* end_;
    const unsigned char* next_ = nullptr;  // the first one from where was asked last
};

using ascii_parts = parts_without<above_ascii>;

}  // namespace zr
