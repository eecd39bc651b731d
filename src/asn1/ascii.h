// Whether octets are ASCII, eight at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zr {

inline uint64_t load_eight(const unsigned char* at) {
    uint64_t octets = 0;
    std::memcpy(&octets, at, sizeof octets);
    return octets;
}

inline bool is_ascii(const void* octets, size_t count) {
    constexpr uint64_t high_bits = 0x8080808080808080u;
    const auto* at = static_cast<const unsigned char*>(octets);
    if (count >= 8) {
        uint64_t all = load_eight(at + count - 8);  // the last eight, some of them twice
        for (; count > 8; count -= 8, at += 8) {
            all |= load_eight(at);
            if ((all & high_bits) != 0) return false;
        }
        return (all & high_bits) == 0;
    }
    unsigned int all = 0;
    for (; count != 0; --count)
        all |= *at++;
    return (all & 0x80) == 0;
}

}  // namespace zr
