#include "verbs/explanation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "asn1/status.h"
#include "asn1/status_text.h"
#include "base/color.h"
#include "base/library.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/ber/mismatch.h"

namespace zr::tool {

namespace {

// The octets around the place with a caret below it.
void show_octets(const octets_input& in, uint64_t offset, bool in_color) {
    constexpr uint64_t around = 8;
    const size_t at = static_cast<size_t>(std::min<uint64_t>(offset, in.size()));
    const size_t begin = at - static_cast<size_t>(std::min<uint64_t>(at, around));
    const size_t end = static_cast<size_t>(std::min<uint64_t>(in.size(), at + around));
    std::string before = begin == 0 ? " " : " ...";
    if (at != begin) before += " " + hex_text(in.data() + begin, at - begin);
    const std::string here = at < end ? " " + hex_text(in.data() + at, 1) : " ";
    const std::string behind = at + 1 < end ? " " + hex_text(in.data() + at + 1, end - at - 1) : "";
    std::fprintf(stderr, "%s%s%s%s%s%s\n%*s%s^%s\n", before.c_str(), in_color ? "\x1B[1;31m" : "", here.c_str(),
                 in_color ? "\x1B[0m" : "", behind.c_str(), end < in.size() ? " ..." : "",
                 static_cast<int>(before.size() + 1), "", in_color ? "\x1B[1;31m" : "", in_color ? "\x1B[0m" : "");
}

// Whether the octets have the shape of the record.
bool fits(const unsigned char* data, size_t size, const record_type& type) {
    mismatch ignored;
    return !find_mismatch(data, size, type, ignored);
}

std::string other_records(const unsigned char* data, size_t size, const record_type& tried) {
    constexpr size_t most = 3;
    constexpr size_t largest = size_t{1} << 20;  // more octets are not tried as every record
    std::string names;
    size_t count = 0;
    if (size == 0 || size > largest) return names;
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            if (type == &tried || !fits(data, size, *type)) continue;
            if (++count > most) continue;
            names += (count == 1 ? "" : ", ") + std::string(type->name);
        }
    }
    if (count > most) names += " and " + std::to_string(count - most) + " more";
    return names;
}

}  // namespace

std::string input_hint(const octets_input& in, const record_type* type) {
    const std::string_view text(reinterpret_cast<const char*>(in.data()), std::min<size_t>(in.size(), 4096));
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (in.size() == 0) return "the input is empty";
    const bool is_string = first != text.npos && text[first] == '"' && text.find('"', first + 1) != text.npos;
    if (first != text.npos && (text[first] == '{' || text[first] == '[' || is_string))
        return "this looks like JSON: \"zrasn encode " + std::string(type != nullptr ? type->name : "RECORD") +
               "\" turns it into octets";
    if (std::string_view(in.form()) == "raw" && text.find_first_not_of("0123456789abcdefABCDEFx:, \t\r\n") == text.npos)
        return "this looks like hexadecimal digits: try --from hex";
    return {};
}

namespace {

// What the input looks like instead, another record's octets among it; or nothing.
std::string hint(const octets_input& in, const record_type* type) {
    if (std::string other = input_hint(in, type); !other.empty() || type == nullptr) return other;
    const size_t header_size = envelope_header_size(in.data(), in.size());
    const std::string others = other_records(in.data() + header_size, in.size() - header_size, *type);
    return others.empty() ? others : "the octets have the shape of " + others;
}

}  // namespace

void print_explanation(const octets_input& in, const record_type* type, const explanation& refused, color_mode color,
                       secret_values secrets) {
    const bool in_color = use_color(color, STDERR_FILENO);
    std::string where = refused.path.empty() && type != nullptr ? type->name : refused.path;
    if (refused.status == zr_err_bad_envelope) where.clear();  // all records have the same
    std::fprintf(stderr, "%s:%llu: %s%s%s (%s, %d)\n", in.label().c_str(),
                 static_cast<unsigned long long>(refused.offset), where.c_str(), where.empty() ? "" : ": ",
                 refused.message.c_str(), status_name(refused.status), refused.status);
    const bool shown = secrets == secret_values::shown || type == nullptr || !has_secrets(*type);
    if (in.size() != 0 && shown) show_octets(in, refused.offset, in_color);
    const std::string meant = hint(in, type);
    if (!meant.empty()) std::fprintf(stderr, "hint: %s\n", meant.c_str());
}

void print_loss(const std::string& label, const loss& lost) {
    std::fprintf(stderr, "%s:%zu: %s%s%s\n", label.c_str(), lost.offset, lost.path.c_str(),
                 lost.path.empty() ? "" : ": ", lost.what.c_str());
}

}  // namespace zr::tool
