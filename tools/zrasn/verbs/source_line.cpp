#include "verbs/source_line.h"

#include <algorithm>
#include <cwchar>

#include <locale.h>

#include "base/library.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

// The nearest beginning of a character at or before `at`; of octets that are no UTF-8, `at`.
size_t character_at(std::string_view text, size_t at) {
    for (size_t back = 0; back < 4 && back <= at && at < text.size(); ++back)
        if ((static_cast<unsigned char>(text[at - back]) & 0xC0) != 0x80) return at - back;
    return at;
}

// Blanks that are as wide on a terminal as the text: the C library knows the width of characters, if it has the locale.
std::string blanks_for(std::string_view shown) {
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = unicode != nullptr ? uselocale(unicode) : nullptr;
    std::string blanks;
    for (size_t at = 0; at < shown.size();) {
        uint32_t code_point = 0;
        at += std::max<size_t>(decode_utf8(shown.substr(at, 4), code_point), 1);
        const int width = unicode != nullptr && code_point > 0x7F ? wcwidth(static_cast<wchar_t>(code_point)) : 1;
        if (code_point == '\t')
            blanks += '\t';
        else
            blanks.append(static_cast<size_t>(std::max(width, 0)), ' ');
    }
    if (unicode != nullptr) {
        uselocale(before);
        freelocale(unicode);
    }
    return blanks;
}

}  // namespace

std::string show_place(std::string_view text, size_t offset) {
    constexpr size_t around = 60;
    offset = std::min(offset, text.size());
    size_t begin = offset > around ? character_at(text, offset - around) : 0;
    if (const size_t line = text.substr(0, offset).rfind('\n'); line != text.npos) begin = std::max(begin, line + 1);
    size_t end = character_at(text, std::min(text.size(), offset + around));
    end = std::min(end, text.find('\n', offset));
    if (end > offset && end < text.size() && text[end - 1] == '\r') --end;
    const std::string before = printable_source(text.substr(begin, offset - begin));
    return "  " + before + printable_source(text.substr(offset, end - offset)) + "\n  " + blanks_for(before) + "^\n";
}

}  // namespace zr::tool
