#include "bench/counts/odd_forms.h"

#include <cstddef>

namespace bench {
namespace {

constexpr unsigned char constructed = 0x20;
constexpr unsigned char octet_string = 0x04;

std::string number(size_t value) {
    std::string written;
    for (; value != 0; value >>= 8)
        written.insert(written.begin(), static_cast<char>(value));
    return written;
}

std::string length(size_t count, form how) {
    if (how == form::indefinite_length) return "\x80";
    if (how != form::long_length && count < 0x80) return std::string(1, static_cast<char>(count));
    std::string written = number(count);
    if (how == form::long_length) written.insert(written.begin(), '\0');
    return static_cast<char>(0x80 | written.size()) + written;
}

std::string element(unsigned char identifier, const std::string& contents, form how = form::shortest) {
    std::string written = static_cast<char>(identifier) + length(contents.size(), how) + contents;
    if (how == form::indefinite_length) written.append(2, '\0');
    return written;
}

// Takes the length octets away from the front.
size_t take_length(std::string_view& rest) {
    size_t value = static_cast<unsigned char>(rest[0]);
    size_t octets = 0;
    if (value >= 0x80) {
        octets = value & 0x7F;
        value = 0;
        for (size_t i = 1; i <= octets; ++i)
            value = value << 8 | static_cast<unsigned char>(rest[i]);
    }
    rest.remove_prefix(1 + octets);
    return value;
}

}  // namespace

std::string in_other_forms(std::string_view encoding, const form_chooser& choose) {
    std::string written;
    while (!encoding.empty()) {
        const auto identifier = static_cast<unsigned char>(encoding[0]);
        encoding.remove_prefix(1);
        const size_t count = take_length(encoding);
        const std::string_view inside = encoding.substr(0, count);
        encoding.remove_prefix(count);

        const form how = choose(identifier);
        if ((identifier & constructed) != 0) {
            written += element(identifier, in_other_forms(inside, choose), how);
        } else if (how == form::segmented || how == form::short_segments) {
            const size_t part = how == form::segmented ? (count + 1) / 2 : 16;
            std::string parts;
            for (size_t from = 0; from < count; from += part)
                parts += element(octet_string, std::string(inside.substr(from, part)));
            written += element(identifier | constructed, parts);
        } else {
            written += element(identifier, std::string(inside), how);
        }
    }
    return written;
}

}  // namespace bench
