#include "json/document/string_writer.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "json/base/text.h"

namespace zr::json {

namespace {

// One UTF-16 unit.
void write_unit(output& out, uint32_t unit) {
    char escape[8];
    std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(unit & 0xFFFF));
    out.write({escape, 6});
}

void write_escape(output& out, uint32_t code_point) {
    static constexpr char shorts[] = "\b\t\n\f\r\"\\";
    const char* found =
        code_point == 0 || code_point > 0x7F ? nullptr : std::strchr(shorts, static_cast<int>(code_point));
    if (found != nullptr) {
        out.put('\\');
        out.put("btnfr\"\\"[found - shorts]);
    } else if (code_point < 0x10000) {
        write_unit(out, code_point);
    } else {
        write_unit(out, 0xD7C0 + (code_point >> 10));
        write_unit(out, 0xDC00 + (code_point & 0x3FF));
    }
}

}  // namespace

void write_json_string(output& out, std::string_view text) {
    out.put('"');
    size_t plain = 0;  // octets that go as they are
    for (size_t at = 0; at < text.size();) {
        const auto c = static_cast<unsigned char>(text[at]);
        if (c >= 0x20 && c < 0x7F && c != '"' && c != '\\') {
            ++at;
            ++plain;
            continue;
        }
        uint32_t code_point = 0xFFFD;
        size_t count = decode_utf8(text.substr(at, 4), code_point);
        if (count != 0 && c >= 0x80 && is_printable(code_point)) {
            at += count;
            plain += count;
            continue;
        }
        out.write(text.substr(at - plain, plain));
        plain = 0;
        write_escape(out, count == 0 ? 0xFFFD : code_point);
        at += count == 0 ? 1 : count;
    }
    out.write(text.substr(text.size() - plain));
    out.put('"');
}

}  // namespace zr::json
