// A text, line by line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_output.h"

namespace zr::tool {

// line_reader reads a file line by line and keeps one line. Throws input_error.
class line_reader {
public:
    static constexpr size_t default_most = size_t{1} << 30;

    // `answers` is flushed before the reader waits for input, so that whoever writes a line gets its answer. Of a line
    // of more than `most` octets only the end is kept.
    line_reader(const std::string& file, file_output& answers, size_t most = default_most);
    ~line_reader();
    line_reader(const line_reader&) = delete;
    line_reader& operator=(const line_reader&) = delete;

    // The next line that is not blank, without its end; false behind the last.
    bool next(std::string_view& line);
    // Whether the line read last had too many octets.
    bool too_long() const { return too_long_; }
    // Of the line read last, counted from 1, blank ones too.
    uint64_t number() const { return number_; }
    const std::string& label() const { return label_; }

private:
    bool take_line(std::string_view& line);
    bool read_more();

    std::string label_;
    file_output& answers_;
    const size_t most_;
    int file_;
    std::vector<char> block_;
    size_t begin_ = 0;  // of what is in the block and not given yet
    size_t end_ = 0;
    bool at_end_ = false;
    bool too_long_ = false;
    uint64_t number_ = 0;
};

}  // namespace zr::tool
