#include "base/json_painter.h"

namespace zr::tool {

namespace {

constexpr char name_color[] = "\x1B[36m";  // as in a dump
constexpr char string_color[] = "\x1B[32m";
constexpr char number_color[] = "\x1B[33m";
constexpr char word_color[] = "\x1B[35m";
constexpr char no_color[] = "\x1B[0m";

bool is_word(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'E';
}

}  // namespace

void json_painter::paint(std::string_view piece, std::string& painted) {
    for (size_t at = 0; at != piece.size(); ++at) {
        const char c = piece[at];
        if (inside_ == inside::string) {
            painted += c;
            if (c == '"' && !escaped_) {
                painted += no_color;
                inside_ = inside::nothing;
            }
            escaped_ = c == '\\' && !escaped_;
            continue;
        }
        if (inside_ == inside::word && !is_word(c)) {
            painted += no_color;
            inside_ = inside::nothing;
        }
        if (c == '"') {
            painted += name_next_ ? name_color : string_color;
            inside_ = inside::string;
            name_next_ = false;
        } else if (inside_ == inside::nothing && is_word(c)) {
            painted += c >= 'a' && c <= 'z' ? word_color : number_color;
            inside_ = inside::word;
        } else if (c == '{' || c == '[') {
            objects_.push_back(c == '{');
            name_next_ = c == '{';
        } else if ((c == '}' || c == ']') && !objects_.empty()) {
            objects_.pop_back();
            name_next_ = false;
        } else if (c == ',') {
            name_next_ = !objects_.empty() && objects_.back();
        }
        painted += c;
    }
}

}  // namespace zr::tool
