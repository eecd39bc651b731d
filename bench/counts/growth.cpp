#include "bench/counts/growth.h"

#include <string_view>
#include <vector>

namespace bench {
namespace {

// Octets that are written from the last to the first, so that each length is known when it is written.
class backwards {
public:
    size_t size() const { return reversed_.size(); }
    void put(std::string_view octets) { reversed_.append(octets.rbegin(), octets.rend()); }
    // The header of a value that ends at `end`.
    void header(char identifier, size_t end) {
        const size_t length = size() - end;
        size_t octets = 0;
        for (size_t rest = length; rest != 0 && length >= 0x80; rest >>= 8, ++octets)
            reversed_ += static_cast<char>(rest);
        reversed_ += static_cast<char>(length < 0x80 ? length : 0x80 | octets);
        reversed_ += identifier;
    }
    std::string envelope() const { return "\x04\x02\xAC\xDC" + std::string(reversed_.rbegin(), reversed_.rend()); }

private:
    std::string reversed_;
};

constexpr char sequence = 0x30, string_in_segments = 0x2C;
constexpr std::string_view name("\x0C\x01n", 3), empty("\x30\x00", 2), letter("\x04\x01n", 3),
    integer("\x02\x01\x00", 3);
constexpr std::string_view indefinite_list("\x30\x80", 2), indefinite_text("\x2C\x80", 2),
    indefinite_segment("\x24\x80", 2), end_of_contents("\x00\x00", 2);

// A list of attributes without values; `last` stands behind them.
std::string wide(size_t octets, std::string_view last) {
    backwards out;
    out.put(last);
    while (out.size() < octets) {
        const size_t end = out.size();
        out.put(empty);
        out.put(name);
        out.header(sequence, end);
    }
    out.header(sequence, 0);
    out.header(sequence, 0);
    return out.envelope();
}

// Nodes that enclose each other, each before `beside` others; `last` stands in the innermost.
std::string deep(size_t octets, size_t beside, std::string_view last) {
    backwards out;
    std::vector<size_t> ends;
    for (size_t level = octets / (12 + 9 * beside); level != 0; --level) {
        ends.push_back(out.size());
        for (size_t i = 0; i < beside; ++i) {
            const size_t end = out.size();
            out.put(empty);
            out.put(empty);
            out.put(name);
            out.header(sequence, end);
        }
    }
    out.put(last);
    for (; !ends.empty(); ends.pop_back()) {
        out.header(sequence, ends.back());
        out.put(empty);
        out.put(name);
        out.header(sequence, ends.back());
    }
    return out.envelope();
}

// The same without others, of indefinite length; `ended` or not.
std::string indefinite(size_t octets, bool ended) {
    backwards out;
    const size_t levels = octets / (ended ? 13 : 9);
    for (size_t level = 0; ended && level < 2 * levels; ++level)
        out.put(end_of_contents);
    for (size_t level = 0; level < levels; ++level) {
        out.put(indefinite_list);
        out.put(empty);
        out.put(name);
        out.put(indefinite_list);
    }
    return out.envelope();
}

// One node. Its name has segments of one octet, side by side or in one another.
std::string segmented(size_t octets, bool nested) {
    backwards out;
    out.put(empty);
    out.put(empty);
    const size_t end = out.size();
    if (nested) {
        const size_t levels = octets / 4;
        for (size_t level = 0; level <= levels; ++level)
            out.put(end_of_contents);
        out.put(letter);
        for (size_t level = 0; level < levels; ++level)
            out.put(indefinite_segment);
        out.put(indefinite_text);
    } else {
        while (out.size() < octets)
            out.put(letter);
        out.header(string_in_segments, end);
    }
    out.header(sequence, 0);
    return out.envelope();
}

}  // namespace

const shape shapes[] = {
    {"wide", false, false, [](size_t octets) { return wide(octets, {}); }},
    {"deep", false, true, [](size_t octets) { return deep(octets, 0, {}); }},
    {"deep-times-wide", false, true, [](size_t octets) { return deep(octets, 4, {}); }},
    {"segmented", false, true, [](size_t octets) { return segmented(octets, false); }},
    {"segments-in-segments", false, true, [](size_t octets) { return segmented(octets, true); }},
    {"indefinite", false, true, [](size_t octets) { return indefinite(octets, true); }},
    {"wide-refused", true, false, [](size_t octets) { return wide(octets, integer); }},
    {"deep-refused", true, true, [](size_t octets) { return deep(octets, 0, integer); }},
    {"deep-times-wide-refused", true, true, [](size_t octets) { return deep(octets, 4, integer); }},
    {"indefinite-refused", true, true, [](size_t octets) { return indefinite(octets, false); }},
    {},
};

}  // namespace bench
