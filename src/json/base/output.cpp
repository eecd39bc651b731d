#include "json/base/output.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zr::json {

namespace {

// The two digits of each octet.
constexpr auto hex_pairs = [] {
    std::array<std::array<char, 2>, 256> pairs{};
    for (size_t octet = 0; octet < pairs.size(); ++octet)
        pairs[octet] = {"0123456789abcdef"[octet >> 4], "0123456789abcdef"[octet & 15]};
    return pairs;
}();

}  // namespace

void output::write_hex(const unsigned char* octets, size_t count) {
    while (count != 0) {
        const size_t some = std::min(count, static_cast<size_t>(end_ - at_) / 2);
        for (const unsigned char* const end = octets + some; octets != end; ++octets, at_ += 2)
            std::memcpy(at_, hex_pairs[*octets].data(), 2);
        count -= some;
        if (count == 0) return;
        take(hex_pairs[*octets++].data(), 2);
        --count;
    }
}

}  // namespace zr::json
