// Hexadecimal digits.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zr::json {

// The value of each character as a digit, in either case; -1 for all others. A look-up, since comparisons of random
// digits are branches that no processor foresees.
inline constexpr std::array<signed char, 256> hex_values = [] {
    std::array<signed char, 256> values{};
    for (signed char& value : values)
        value = -1;
    for (unsigned char digit = 0; digit < 16; ++digit) {
        values[static_cast<unsigned char>("0123456789abcdef"[digit])] = static_cast<signed char>(digit);
        values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = static_cast<signed char>(digit);
    }
    return values;
}();

constexpr int hex_digit(char c) { return hex_values[static_cast<unsigned char>(c)]; }

// The octet that two digits stand for; negative when one of them is none.
constexpr int hex_octet(char high, char low) { return hex_digit(high) * 16 | hex_digit(low); }

// Writes an octet for each two digits, up to the first two that are none, and returns how many. What lies behind them
// in the room for `pairs` octets may be overwritten: where digits stand side by side four at a time are written and
// then judged.
inline size_t read_hex_pairs(const char* digits, size_t pairs, unsigned char* to) {
    const auto put = [=](size_t i) {
        const int octet = hex_octet(digits[2 * i], digits[2 * i + 1]);
        to[i] = static_cast<unsigned char>(octet);
        return octet;
    };
    size_t done = 0;
    while (done != pairs && put(done) >= 0) {
        ++done;
        if (done == pairs || hex_digit(digits[2 * done]) < 0) break;
        while (pairs - done >= 4 && (put(done) | put(done + 1) | put(done + 2) | put(done + 3)) >= 0)
            done += 4;
    }
    return done;
}

// Writes an octet for each two digits; false when there is anything else, or an odd number of them.
inline bool read_hex(std::string_view digits, unsigned char* to) {
    const size_t pairs = digits.size() / 2;
    return digits.size() % 2 == 0 && read_hex_pairs(digits.data(), pairs, to) == pairs;
}

// Octets in a message: "04 02 ac dc".
inline std::string hex_text(const unsigned char* octets, size_t count) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i != count; ++i) {
        if (i != 0) text += ' ';
        text += digits[octets[i] >> 4];
        text += digits[octets[i] & 15];
    }
    return text;
}

}  // namespace zr::json
