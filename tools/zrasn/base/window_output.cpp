#include "base/window_output.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <system_error>

#include <sys/ioctl.h>
#include <unistd.h>

#include "json/base/text.h"

namespace zr::tool {

size_t window_columns() {
    if (isatty(STDOUT_FILENO) == 0) return 0;
    if (const char* const told = std::getenv("COLUMNS")) {
        size_t columns = 0;
        const char* const end = told + std::strlen(told);
        const auto [behind, fault] = std::from_chars(told, end, columns);
        if (behind == end && fault == std::errc() && columns != 0) return columns;
    }
    winsize window = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 ? window.ws_col : 0;
}

window_output::window_output(file_output& file, size_t columns)
    : file_(file), columns_(columns), unicode_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {}

window_output::~window_output() {
    if (unicode_ != nullptr) freelocale(unicode_);
}

void window_output::take(const char* octets, size_t count) {
    for (const char* const end = octets + count; octets != end;) {
        const char* const line_end = std::find(octets, end, '\n');
        line_.append(octets, line_end);
        if (line_end == end) return;
        write_line();
        octets = line_end + 1;
    }
}

// Of what is at `at`, which moves behind it.
size_t window_output::width_of(std::string_view text, size_t& at) const {
    if (text[at] == '\x1B') {
        at = std::min(text.find('m', at), text.size() - 1) + 1;
        return 0;
    }
    uint32_t code_point = 0;
    at += std::max<size_t>(decode_utf8(text.substr(at, 4), code_point), 1);
    if (unicode_ == nullptr || code_point < 0x7F) return 1;
    const locale_t before = uselocale(unicode_);
    const int width = wcwidth(static_cast<wchar_t>(code_point));
    uselocale(before);
    return static_cast<size_t>(std::max(width, 0));
}

void window_output::write_line() {
    static constexpr std::string_view mark = "...";
    size_t width = 0, kept = 0;  // octets up to where the mark may stand
    std::string behind;          // colours are set back behind the cut too
    for (size_t at = 0; at != line_.size();) {
        const size_t from = at;
        width += width_of(line_, at);
        if (width + mark.size() <= columns_)
            kept = at;
        else if (line_[from] == '\x1B')
            behind.append(line_, from, at - from);
    }
    if (width > columns_) {
        line_.resize(kept);
        line_.append(mark.substr(0, columns_)).append(behind);
    }
    line_ += '\n';
    file_.write(line_);
    line_.clear();
}

}  // namespace zr::tool
