#include "json/base/text.h"

#include <cstdio>
#include <cstring>

namespace zr::json {

size_t decode_utf8(std::string_view text, uint32_t& code_point) {
    if (text.empty()) return 0;
    const auto octet = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = octet(0);
    if (first < 0x80) {
        code_point = first;
        return 1;
    }
    const size_t count = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < count) return 0;
    uint32_t value = first & (0x7Fu >> count);
    for (size_t i = 1; i < count; ++i) {
        if ((octet(i) & 0xC0) != 0x80) return 0;
        value = value << 6 | (octet(i) & 0x3Fu);
    }
    constexpr uint32_t least[] = {0x80, 0x800, 0x10000};
    if (value < least[count - 2] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
    code_point = value;
    return count;
}

size_t utf8_size(std::string_view text) {
    constexpr uint64_t beyond_ascii = 0x8080808080808080;
    uint32_t code_point = 0;
    size_t at = 0;
    for (size_t count = 1; count != 0; at += count) {
        for (uint64_t words[4]; text.size() - at >= sizeof words; at += sizeof words) {
            std::memcpy(words, text.data() + at, sizeof words);
            if (((words[0] | words[1] | words[2] | words[3]) & beyond_ascii) != 0) break;
        }
        count = decode_utf8(text.substr(at), code_point);
    }
    return at;
}

bool is_printable(uint32_t code_point) {
    if (code_point < 0x7F) return code_point >= 0x20;
    struct range {
        uint32_t first, last;
    };
    static constexpr range hidden[] = {
        {0x7F, 0x9F},         // DEL, C1
        {0xAD, 0xAD},         // soft hyphen
        {0x34F, 0x34F},       // combining grapheme joiner
        {0x61C, 0x61C},       // Arabic letter mark
        {0x115F, 0x1160},     // Hangul fillers
        {0x17B4, 0x17B5},     // Khmer inherent vowels
        {0x180B, 0x180F},     // Mongolian selectors and separator
        {0x200B, 0x200F},     // zero width, marks of direction
        {0x2028, 0x202E},     // separators of lines and paragraphs, embeddings, overrides
        {0x2060, 0x206F},     // word joiner, isolates, deprecated controls
        {0x3164, 0x3164},     // Hangul filler
        {0xD800, 0xF8FF},     // surrogates, private use
        {0xFDD0, 0xFDEF},     // no characters
        {0xFE00, 0xFE0F},     // variation selectors
        {0xFEFF, 0xFEFF},     // byte order mark
        {0xFFA0, 0xFFA0},     // half-width Hangul filler
        {0xFFF0, 0xFFFB},     // interlinear annotation
        {0x1BCA0, 0x1BCA3},   // shorthand format controls
        {0x1D173, 0x1D17A},   // musical format controls
        {0xE0000, 0x10FFFF},  // tags, private use
    };
    for (const range& range : hidden)
        if (code_point <= range.last) return code_point < range.first;
    return (code_point & 0xFFFE) != 0xFFFE;
}

namespace {

std::string escaped(std::string_view text, bool is_source) {
    std::string safe;
    safe.reserve(text.size());
    while (!text.empty()) {
        uint32_t code_point = 0;
        const size_t count = decode_utf8(text, code_point);
        char escape[16];
        if (count == 0) {
            std::snprintf(escape, sizeof(escape), "\\x%02x", static_cast<unsigned char>(text[0]));
            safe += escape;
        } else if (code_point == '\\' && !is_source) {
            safe += "\\\\";
        } else if (is_printable(code_point) || (code_point == '\t' && is_source)) {
            safe += text.substr(0, count);
        } else {
            std::snprintf(escape, sizeof(escape), "\\u{%x}", static_cast<unsigned>(code_point));
            safe += escape;
        }
        text.remove_prefix(count == 0 ? 1 : count);
    }
    return safe;
}

}  // namespace

std::string printable(std::string_view text) { return escaped(text, false); }

std::string printable_source(std::string_view text) { return escaped(text, true); }

std::string in_quotes(std::string_view text) {
    constexpr size_t longest = 40;
    if (text.size() <= longest) return "\"" + printable(text) + "\"";
    size_t cut = longest;
    while (cut > longest - 3 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;
    return "\"" + printable(text.substr(0, cut)) + "...\"";
}

std::string counted(uint64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace zr::json
