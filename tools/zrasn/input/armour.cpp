#include "input/armour.h"

#include "base/library.h"
#include "input/text_decoder.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

constexpr std::string_view begin = "-----BEGIN ", end = "-----END ";

bool starts_with(std::string_view line, std::string_view front) { return line.substr(0, front.size()) == front; }

// What stands between the dashes.
std::string_view label_of(std::string_view line, std::string_view front) {
    line.remove_prefix(front.size());
    return line.substr(0, line.find("-----"));
}

}  // namespace

bool armour::take(std::string_view line) {
    remark_.clear();
    switch (place_) {
        case place::before:
            if (!starts_with(line, begin)) return false;
            label_ = label_of(line, begin);
            place_ = place::headers;
            return false;
        case place::headers:
            if (line.find(':') != line.npos || (has_headers_ && !line.empty() && is_space(line[0]))) {
                has_headers_ = true;  // or goes on with one
                return false;
            }
            place_ = place::inside;
            [[fallthrough]];
        case place::inside:
            if (starts_with(line, begin)) problem_ = "a -----BEGIN line inside the armour";
            if (!problem_.empty()) return false;
            if (!starts_with(line, end)) return true;
            place_ = place::behind;
            if (label_of(line, end) != label_)
                remark_ = "the armour of " + in_quotes(label_) + " ends as that of " + in_quotes(label_of(line, end));
            return false;
        case place::behind:
            break;
    }
    if (starts_with(line, begin)) remark_ = "another armoured block: not read";
    return false;
}

bool armour::finish() {
    if (place_ != place::behind && problem_.empty()) problem_ = "the armour has no -----END line";
    return problem_.empty();
}

bool has_armour(std::string_view text) {
    const size_t at = text.find(begin);
    if (at == text.npos || (at != 0 && text[at - 1] != '\n')) return false;
    for (unsigned char c : text.substr(0, at))
        if ((c < ' ' && !is_space(static_cast<char>(c))) || c == 0x7F) return false;
    return true;
}

}  // namespace zr::tool
