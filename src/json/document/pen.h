// Brackets, commas and line ends of JSON, in one of its layouts.
#pragma once

#include <cstddef>
#include <string_view>

#include "json/base/output.h"

namespace zr::json {

// Indented lines, or one; a line end is not written behind the last. What nests deeper than 32 levels stands on one
// line in any case, so that the size stays linear.
enum class json_layout { indented, one_line };

class json_pen {
public:
    json_pen(output& out, json_layout layout)
        : out_(out), spaced_(layout == json_layout::indented), deepest_(spaced_ ? most_indented : 0) {}

    output& out() { return out_; }
    // Whether a space follows a colon, and a comma within a line.
    bool spaced() const { return spaced_; }

    void open(char bracket) {
        out_.put(bracket);
        ++depth_;
    }
    void close(char bracket, bool empty) {
        const bool own_line = !empty && depth_ <= deepest_;
        --depth_;
        if (own_line) new_line();
        out_.put(bracket);
    }
    // Before a member or an element.
    void separate(bool first) {
        if (!first) out_.put(',');
        if (depth_ <= deepest_)
            new_line();
        else if (!first && spaced_)
            out_.put(' ');
    }
    // Between values that stand side by side.
    void separate_in_row(bool first) {
        if (!first) out_.write(spaced_ ? ", " : ",");
    }
    void key(std::string_view name) {
        out_.put('"');
        out_.write(name);
        out_.write(spaced_ ? "\": " : "\":");
    }

private:
    static constexpr size_t most_indented = 32;  // levels

    void new_line() {
        static constexpr char line[] = "\n                                                                ";
        static_assert(sizeof(line) - 2 == 2 * most_indented);
        out_.write({line, 1 + 2 * depth_});
    }

    output& out_;
    const bool spaced_;
    const size_t deepest_;  // level whose elements have lines of their own
    size_t depth_ = 0;
};

}  // namespace zr::json
