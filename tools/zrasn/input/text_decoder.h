// Octets that are written as text.
#pragma once

#include <cstddef>

namespace zr::tool {

// The form of the input's octets: --from.
enum class input_form { automatic, raw, hex, base64, dump };

// text_decoder takes hexadecimal digits (with spaces, line ends, colons, commas and 0x between octets) or base64 (RFC
// 4648, 4 and 5), in as many pieces as one likes.
class text_decoder {
public:
    // input_form::base64 or, for all else, hexadecimal.
    explicit text_decoder(input_form form) : base64_(form == input_form::base64) {}

    // Decodes from `at` on, until the text ends, the room is full, or a character is refused: problem() says why, and
    // `at` stands there. Answers how many octets there are.
    size_t decode(const char*& at, const char* end, unsigned char* to, size_t room);
    // At the end: false when the last octet is not complete.
    bool finish();
    // What was wrong, in words; empty when nothing was.
    const char* problem() const { return problem_; }
    bool refused() const { return *problem_ != 0; }

private:
    static constexpr int nothing = -1;

    // The octet that the character completes, or nothing.
    int feed(char c) { return base64_ ? feed_base64(c) : feed_hex(c); }
    int feed_hex(char c);
    int feed_base64(char c);
    int refuse(const char* problem) {
        problem_ = problem;
        return nothing;
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
