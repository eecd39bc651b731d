#include "input/text_decoder.h"

#include <algorithm>

#include "base/library.h"
#include "json/base/hex.h"

namespace zr::tool {

int base64_digit(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+' || c == '-') return 62;
    if (c == '/' || c == '_') return 63;
    return -1;
}

size_t text_decoder::decode(const char*& at, const char* end, unsigned char* to, size_t room) {
    size_t count = 0;
    while (at != end && count != room) {
        if (!base64_ && digits_ % 2 == 0) {
            const auto pairs = std::min(static_cast<size_t>(end - at) / 2, room - count);
            const size_t done = read_hex_pairs(at, pairs, to + count);
            at += 2 * done;
            count += done;
            digits_ += 2 * done;
            if (at == end || count == room) break;
            if (is_space(*at)) {
                ++at;
                continue;
            }
        }
        const int octet = feed(*at);
        if (refused()) break;
        ++at;
        if (octet >= 0) to[count++] = static_cast<unsigned char>(octet);
    }
    return count;
}

int text_decoder::feed_hex(char c) {
    const int digit = hex_digit(c);
    const char before = last_;
    last_ = c;
    if (digit >= 0) {
        bits_ = bits_ << 4 | static_cast<unsigned>(digit);
        return ++digits_ % 2 == 0 ? static_cast<int>(bits_ & 0xFF) : nothing;
    }
    if ((c == 'x' || c == 'X') && before == '0' && digits_ % 2 != 0) {
        --digits_;  // that zero was the one of 0x
        return nothing;
    }
    if (is_space(c) || c == ':' || c == ',') return nothing;
    return refuse("not a hexadecimal digit");
}

int text_decoder::feed_base64(char c) {
    if (is_space(c)) return nothing;
    if (c == '=') {
        ++padding_;
        if (digits_ % 4 < 2 || digits_ % 4 + padding_ > 4) return refuse("base64 padding where none belongs");
        return nothing;
    }
    const int digit = base64_digit(c);
    if (digit < 0) return refuse("not a base64 digit");
    if (padding_ != 0) return refuse("a base64 digit behind the padding");
    ++digits_;
    bits_ = bits_ << 6 | static_cast<unsigned>(digit);
    bit_count_ += 6;
    if (bit_count_ < 8) return nothing;
    bit_count_ -= 8;
    return static_cast<int>(bits_ >> bit_count_ & 0xFF);
}

bool text_decoder::finish() {
    if (!base64_ && digits_ % 2 != 0) problem_ = "an odd number of hexadecimal digits";
    if (base64_ && digits_ % 4 == 1) problem_ = "base64 ends inside an octet";
    if (base64_ && padding_ != 0 && (digits_ + padding_) % 4 != 0) problem_ = "base64 padding is not complete";
    return !refused();
}

}  // namespace zr::tool
