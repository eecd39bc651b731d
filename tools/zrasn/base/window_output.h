// Lines that fit into the window of a terminal.
#pragma once

#include <cstddef>
#include <string>

#include <locale.h>

#include "base/file_output.h"
#include "base/library.h"

namespace zr::tool {

// Columns of the window that is standard output: COLUMNS, if it is a number, else what the terminal says; 0 where it is
// no terminal, or none is known.
size_t window_columns();

// window_output cuts lines of more than so many columns, marks them with "...", and hands all to a file. Sequences that
// set colours have no width. Texts are UTF-8; the C library knows how wide characters are, if it has the locale
// C.UTF-8.
class window_output final : public output {
public:
    window_output(file_output& file, size_t columns);
    ~window_output();

private:
    void take(const char* octets, size_t count) override;
    void write_line();
    size_t width_of(std::string_view text, size_t& at) const;

    file_output& file_;
    const size_t columns_;
    const locale_t unicode_;
    std::string line_;
};

}  // namespace zr::tool
