// Octets as tests write and print them: two hexadecimal digits each, separated by spaces.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zr_test {

// bytes reads "30 03 02 01 05"; spaces are optional, digits of either case. Throws on anything else: a typing error in
// a table must not become a test of something else.
inline std::vector<unsigned char> bytes(std::string_view text) {
    auto digit = [&](char c) -> unsigned {
        if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
        if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
        if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
        throw std::invalid_argument("not octets: " + std::string(text));
    };
    std::vector<unsigned char> out;
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == ' ') continue;
        unsigned high = digit(text[i]);
        out.push_back(static_cast<unsigned char>(high << 4 | digit(++i < text.size() ? text[i] : '?')));
    }
    return out;
}

// hex is the reverse: "30 03 02 01 05", lower case.
inline std::string hex(const void* data, size_t length) {
    static const char digits[] = "0123456789abcdef";
    const auto* from = static_cast<const unsigned char*>(data);
    std::string out;
    for (size_t i = 0; i < length; i++) {
        if (i != 0) out += ' ';
        out += digits[from[i] >> 4];
        out += digits[from[i] & 15];
    }
    return out;
}

inline std::string hex(const std::vector<unsigned char>& data) { return hex(data.data(), data.size()); }

}  // namespace zr_test
