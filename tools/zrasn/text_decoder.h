// Octets that are written as text.
#pragma once

#include <cstddef>

#include "verbs.h"

namespace zr::tool {

// text_decoder takes hexadecimal digits (with spaces, line ends, colons, commas and 0x between octets) or base64 (RFC
// 4648, 4 and 5) one character at a time.
class text_decoder {
public:
    static constexpr int nothing = -1;
    static constexpr int refused = -2;

    // input_form::base64 or, for all else, hexadecimal.
    explicit text_decoder(input_form form) : base64_(form == input_form::base64) {}

    // The octet that the character completes, or nothing, or refused.
    int feed(char c) { return base64_ ? feed_base64(c) : feed_hex(c); }
    // At the end: false when the last octet is not complete.
    bool finish();
    // What was wrong, in words.
    const char* problem() const { return problem_; }

private:
    int feed_hex(char c);
    int feed_base64(char c);
    int refuse(const char* problem) {
        problem_ = problem;
        return refused;
    }

    bool base64_;
    unsigned bits_ = 0;
    unsigned bit_count_ = 0;  // of bits_: those that do not make an octet yet
    size_t digits_ = 0;
    size_t padding_ = 0;
    char last_ = 0;
    const char* problem_ = "";
};

// The value of a base64 digit; -1 for any other character.
int base64_digit(char c);

constexpr bool is_space(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace zr::tool
