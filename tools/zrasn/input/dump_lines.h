// Octets in the form in which xxd, hexdump and od show them: lines of an offset, groups of digits and, it may be, text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zr::tool {

// dump_lines takes the lines one by one: of xxd those with a colon behind the offset; of hexdump and od octets in
// hexadecimal or octal digits, and words of 2, 4 or 8 octets (octal ones of 2) with the low octet first, unless the
// first words are an envelope's header as they stand. Offsets may be hexadecimal, octal or decimal: they must go on
// with the octets, which tells which. A line with a star stands for more like the one before; the offset behind it
// tells how many.
class dump_lines {
public:
    using receiver = std::function<void(const unsigned char*, size_t)>;

    // Repeated lines may make `most_repeated` octets.
    explicit dump_lines(uint64_t most_repeated) : most_repeated_(most_repeated) {}

    // Gives the octets that are certain to `to`. False when the line is none of such a text: problem() says why.
    bool take(std::string_view line, const receiver& to);
    // At the end: gives the rest.
    bool finish(const receiver& to);
    const std::string& problem() const { return problem_; }

    // Whether what was taken can be nothing else, such as mere digits.
    bool is_certain() const { return certain_ || offsets_ > 1; }

private:
    struct radix {
        unsigned base;
        bool possible;
        uint64_t start;   // the first offset
        uint64_t offset;  // of the line that is read
    };

    bool refuse(std::string_view why);
    bool take_offset(std::string_view digits);
    bool take_groups(std::string_view groups, bool behind_colon);
    bool take_group(std::string_view group);
    size_t group_octets() const;
    bool place_line(bool is_last, const receiver& to);
    bool repeat(uint64_t count, const receiver& to);
    void give(const receiver& to);

    const uint64_t most_repeated_;
    uint64_t repeated_ = 0;
    radix radices_[3] = {{16, true, 0, 0}, {8, true, 0, 0}, {10, true, 0, 0}};  // those meant first stand first
    uint64_t before_ = 0;                                                       // octets before the held line
    std::vector<unsigned char> held_;  // the line before: the next offset tells how much of it there is
    std::vector<unsigned char> line_;  // the one that is read
    size_t width_ = 0;                 // digits of a group
    size_t offsets_ = 0;
    size_t offset_digits_ = 0;
    bool certain_ = false;
    bool low_octet_first_ = true;
    bool star_ = false;
    bool ended_ = false;
    std::string problem_;
};

// Whether a text, or its first octets, is one.
bool has_dump(std::string_view text, bool is_whole);

}  // namespace zr::tool
