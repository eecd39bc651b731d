#include "input/dump_lines.h"

#include <algorithm>
#include <utility>

#include "base/library.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

constexpr size_t least_offset = 6;  // digits; where a colon follows, 4 will do

// The number that digits are; false when they are none of the base, or too many.
bool number_of(std::string_view digits, unsigned base, uint64_t& number) {
    number = 0;
    for (char c : digits) {
        const int digit = hex_digit(c);
        if (digit < 0 || static_cast<unsigned>(digit) >= base || number >> 58 != 0) return false;
        number = number * base + static_cast<unsigned>(digit);
    }
    return !digits.empty();
}

std::string_view without_spaces(std::string_view text) {
    while (!text.empty() && is_space(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_space(text.back()))
        text.remove_suffix(1);
    return text;
}

}  // namespace

bool dump_lines::refuse(std::string_view why) {
    problem_ = why;
    return false;
}

bool dump_lines::take(std::string_view line, const receiver& to) {
    line = without_spaces(line);
    if (line.empty()) return true;
    if (ended_) return refuse("a line behind the last offset");
    if (line == "*") {
        if (held_.empty() || star_) return refuse("a star with no line before it to repeat");
        return star_ = true;
    }
    if (line.substr(0, 2) == "0x") line.remove_prefix(2);
    const size_t end = std::min(line.find_first_of(": \t"), line.size());
    const bool behind_colon = line.substr(end, 2) == ": ";
    if (end < (behind_colon ? 4 : least_offset) || !take_offset(line.substr(0, end)))
        return refuse("a line without an offset");
    line_.clear();
    offset_digits_ = end;
    if (end != line.size() && !take_groups(line.substr(end + 1), behind_colon)) return false;
    certain_ = certain_ || behind_colon || (end == 7 && radices_[0].start == 0);
    return place_line(line_.empty(), to);
}

bool dump_lines::take_offset(std::string_view digits) {
    bool any = false;
    for (radix& each : radices_) {
        each.possible = each.possible && number_of(digits, each.base, each.offset);
        if (offsets_ == 0) each.start = each.offset;
        any = any || each.possible;
    }
    ++offsets_;
    return any;
}

// Behind a colon the text at the end of the line follows two spaces, else it stands between | or > and <.
bool dump_lines::take_groups(std::string_view groups, bool behind_colon) {
    groups = without_spaces(groups);
    while (!groups.empty() && groups[0] != '|' && groups[0] != '>') {
        const size_t end = std::min(groups.find_first_of(" \t"), groups.size());
        const std::string_view group = groups.substr(0, end);
        if (behind_colon) {
            const size_t before = line_.size();
            line_.resize(before + group.size() / 2);
            if (!read_hex(group, line_.data() + before)) return refuse("not hexadecimal digits, two for each octet");
        } else if (!take_group(group)) {
            return refuse("a group of digits that is no octet or word");
        }
        groups.remove_prefix(end);
        if (behind_colon && groups.substr(0, 2) == "  ") break;
        groups = without_spaces(groups);
    }
    certain_ = certain_ || !groups.empty();
    return true;
}

// Of hexdump and od; the last word may have fewer.
size_t dump_lines::group_octets() const { return width_ == 3 || width_ == 6 ? width_ / 3 : width_ / 2; }

bool dump_lines::take_group(std::string_view group) {
    if (width_ == 0) {
        width_ = group.size();
        // od's offsets have seven octal digits; those of hexdump's words have seven hexadecimal ones.
        if (offset_digits_ == 7 && width_ != 4) std::swap(radices_[0], radices_[1]);
    }
    const bool octal = width_ == 3 || width_ == 6;
    uint64_t number = 0;
    if (group.size() != width_ || (!octal && width_ != 2 && width_ != 4 && width_ != 8 && width_ != 16)) return false;
    if (width_ == 16) {
        uint64_t high = 0;
        if (!number_of(group.substr(0, 8), 16, high) || !number_of(group.substr(8), 16, number)) return false;
        number |= high << 32;
    } else if (!number_of(group, octal ? 8 : 16, number)) {
        return false;
    }
    const size_t octets = group_octets();
    if (octets < 8 && number >> 8 * octets != 0) return false;
    for (size_t i = 0; i != octets; ++i)
        line_.push_back(static_cast<unsigned char>(number >> 8 * (low_octet_first_ ? i : octets - 1 - i)));
    if (offsets_ == 1 && octets > 1 && low_octet_first_ && line_.size() == 8) {
        std::vector<unsigned char> as_written = line_;
        for (size_t i = 0; i != as_written.size(); i += octets)
            std::reverse(as_written.begin() + static_cast<std::ptrdiff_t>(i),
                         as_written.begin() + static_cast<std::ptrdiff_t>(i + octets));
        low_octet_first_ = !has_header(as_written.data(), as_written.size());
        if (!low_octet_first_) line_ = as_written;
    }
    return true;
}

// Settles what the line before has, now that the offset of the next one is known.
bool dump_lines::place_line(bool is_last, const receiver& to) {
    if (offsets_ > 1) {
        const uint64_t here = before_ + held_.size();
        const auto fits = [&](const radix& each) {
            if (!each.possible || each.offset < each.start) return false;
            const uint64_t offset = each.offset - each.start;
            if (star_) return offset >= here && (is_last || (offset - here) % held_.size() == 0);
            return offset == here || (is_last && offset < here && offset + group_octets() > here);
        };
        const radix* meant = nullptr;
        for (radix& each : radices_) {
            each.possible = fits(each) && (meant == nullptr || !star_);
            if (each.possible && meant == nullptr) meant = &each;
        }
        if (meant == nullptr) return refuse("an offset that does not go on with the octets before");
        const uint64_t offset = meant->offset - meant->start;
        if (star_ && !repeat(offset - here, to)) return false;
        if (!star_ && offset < here) held_.resize(static_cast<size_t>(offset - before_));
        star_ = false;
        give(to);
    }
    ended_ = is_last;
    held_.swap(line_);
    return true;
}

// Gives the held line, and so many octets more of it; nothing is held behind them.
bool dump_lines::repeat(uint64_t count, const receiver& to) {
    if (count > most_repeated_ || (repeated_ += count) > most_repeated_)
        return refuse("repeated lines of more than " + counted(most_repeated_, "octet"));
    const std::vector<unsigned char> line = held_;
    give(to);
    // In large pieces: there may be millions of lines.
    std::vector<unsigned char> piece;
    while (piece.size() < 65536 && piece.size() < count)
        piece.insert(piece.end(), line.begin(), line.end());
    for (before_ += count; count != 0;) {
        const auto some = static_cast<size_t>(std::min<uint64_t>(count, piece.size()));
        to(piece.data(), some);
        count -= some;
    }
    return true;
}

void dump_lines::give(const receiver& to) {
    if (!held_.empty()) to(held_.data(), held_.size());
    before_ += held_.size();
    held_.clear();
}

bool dump_lines::finish(const receiver& to) {
    if (star_) return refuse("a star with no offset behind it");
    give(to);
    return true;
}

bool has_dump(std::string_view text, bool is_whole) {
    constexpr size_t enough_offsets = 3;
    const auto nothing = [](const unsigned char*, size_t) {};
    dump_lines lines(UINT64_MAX);
    for (size_t i = 0; i != enough_offsets && !text.empty(); ++i) {
        const size_t end = text.find('\n');
        if (end == text.npos && !is_whole) break;
        if (!lines.take(text.substr(0, end), nothing)) return false;
        text.remove_prefix(end == text.npos ? text.size() : end + 1);
    }
    return lines.is_certain();
}

}  // namespace zr::tool
