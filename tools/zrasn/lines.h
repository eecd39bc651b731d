// Records that stand one on a line.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "output.h"

namespace zr::tool {

// line_reader reads a file line by line and keeps one line. Throws input_error.
class line_reader {
public:
    static constexpr size_t default_most = size_t{1} << 30;

    // `answers` is flushed before the reader waits for input, so that whoever writes a line gets its answer. Of a line
    // of more than `most` octets only the end is kept.
    line_reader(const std::string& file, output& answers, size_t most = default_most);
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
    output& answers_;
    const size_t most_;
    int file_;
    std::vector<char> block_;
    size_t begin_ = 0;  // of what is in the block and not given yet
    size_t end_ = 0;
    bool at_end_ = false;
    bool too_long_ = false;
    uint64_t number_ = 0;
};

// line_refusal is what the line of a refused record says; `line` is counted from 1. Status 0 stands for text that never
// came to the library: its status and name are null.
struct line_refusal {
    int status;
    uint64_t line;
    uint64_t offset;
    std::string_view path;
    std::string_view message;
};
void write_line_refusal(output& out, const line_refusal& refusal);

// line_progress counts, and after two seconds shows the count on standard error, when that is a terminal.
class line_progress {
public:
    line_progress();
    ~line_progress();
    void accepted() { count(false); }
    void refused() { count(true); }
    bool any_refused() const { return refused_ != 0; }

private:
    void count(bool refused);

    uint64_t records_ = 0;
    uint64_t refused_ = 0;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace zr::tool
