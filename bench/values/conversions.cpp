#include <iconv.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "asn1/asnstrng/converters.h"
#include "bench/harness/peer.h"
#include "bench/values/values.h"
#include "zrz/zrz.h"

namespace bench {
namespace {

using converter = std::function<int(const zr_r_buffer_t& in, zr_buffer_t& out)>;

// Conversions of the local code set end with an exception when they fail.
int local_to_utf8(const zr_r_buffer_t& in, zr_buffer_t& out) {
    const ZUTF8String_5_1 utf8(ZLCConstString_5_1(reinterpret_cast<const char*>(in.current()), in.remaining()));
    return out.append(reinterpret_cast<const unsigned char*>(utf8.getChars()),
                      static_cast<unsigned int>(utf8.getLength()));
}
int utf8_to_local(const zr_r_buffer_t& in, zr_buffer_t& out) {
    const ZLCString_5_1 local(ZUTF8ConstString_5_1(reinterpret_cast<const char*>(in.current()), in.remaining()));
    return out.append(reinterpret_cast<const unsigned char*>(local.getChars()),
                      static_cast<unsigned int>(local.getLength()));
}

// The text in the code set that `form` makes of ISO 8859-1: ASCII but for every tenth character, or all ASCII.
zr_buffer_t text(const converter& form, size_t characters, bool ascii = false) {
    zr_buffer_t latin(zr_normal);
    zr_buffer_t made(zr_normal);
    for (size_t i = 0; i < characters; ++i)
        latin.append(static_cast<unsigned char>(i % 10 == 5 && !ascii ? 0xE9 : 'a' + i % 26));
    if (form(latin, made) != 0) std::abort();
    return made;
}

int ia5(const zr_r_buffer_t& in, zr_buffer_t& out) { return out.append(in); }

// Conversions into a buffer that is kept, beside iconv into the same room with a descriptor that stays open. The names
// end with what converts.
void add_beside_iconv(std::vector<timed_case>& cases) {
    const struct {
        const char* name;
        converter source, convert;
        const char *from, *to;
    } conversions[] = {
        {"IA5 to UTF-8", ia5, IA52UTF8, "ASCII", "UTF-8"},
        {"IA5 to universal", ia5, IA52U, "ASCII", "UCS-4BE"},
        {"UTF-8 to IA5", IA52UTF8, UTF82IA5, "UTF-8", "ISO-8859-1"},
        {"UTF-8 to BMP", IA52UTF8, UTF82BMP, "UTF-8", "UCS-2BE"},
        {"UTF-8 to universal", IA52UTF8, UTF82U, "UTF-8", "UCS-4BE"},
        {"BMP to UTF-8", IA52BMP, BMP2UTF8, "UCS-2BE", "UTF-8"},
        {"BMP to universal", IA52BMP, BMP2U, "UCS-2BE", "UCS-4BE"},
        {"universal to UTF-8", IA52U, U2UTF8, "UCS-4BE", "UTF-8"},
        {"universal to BMP", IA52U, U2BMP, "UCS-4BE", "UCS-2BE"},
        {"T.61 to BMP", IA52T61, T612BMP, "T.61-8BIT", "UCS-2BE"},
        {"IA5 to T.61", ia5, IA52T61, "ISO-8859-1", "T.61-8BIT"},
    };
    for (const auto& row : conversions) {
        for (const bool ascii : {true, false}) {
            if (!ascii && std::string(row.from) == "ASCII") continue;
            for (const size_t characters : {30, 1000}) {
                const auto out = std::make_shared<zr_buffer_t>(static_cast<unsigned int>(4 * characters), zr_normal);
                const auto ours = [source = text(row.source, characters, ascii), convert = row.convert,
                                   out](size_t times) {
                    for (; times != 0; --times) {
                        out->clear();
                        if (convert(source, *out) != 0) std::abort();
                        keep(out->data());
                    }
                };
                const std::shared_ptr<void> open(iconv_open(row.to, row.from), iconv_close);
                const auto theirs = [source = text(row.source, characters, ascii), open, out](size_t times) {
                    for (; times != 0; --times) {
                        auto* in = reinterpret_cast<char*>(source.current());
                        auto* at = reinterpret_cast<char*>(out->data());
                        size_t left = source.length();
                        size_t room = out->capacity();
                        if (iconv(open.get(), &in, &left, &at, &room) != 0) std::abort();
                        keep(out->data());
                    }
                };
                const std::string name =
                    std::string(row.name) + (ascii ? ", ASCII/" : ", é/") + std::to_string(characters);
                cases.push_back({name + "/zrasn", static_cast<double>(characters), 1, [] {}, ours, [] {}});
                cases.push_back({name + "/iconv", static_cast<double>(characters), 1, [] {}, theirs, [] {}});
            }
        }
    }
}

}  // namespace

std::vector<timed_case> conversion_cases() {
    setenv("LOCPATH", ZR_BENCH_LOCALES, 1);
    const bool locale = std::setlocale(LC_CTYPE, "latin1") != nullptr;
    if (!locale) std::fprintf(stderr, "The local code set is skipped: no locale latin1 in %s\n", ZR_BENCH_LOCALES);
    std::setlocale(LC_CTYPE, "C");

    const struct {
        const char* name;
        bool local;
        converter source, convert;
    } conversions[] = {
        {"local to UTF-8", true, ia5, local_to_utf8}, {"UTF-8 to local", true, IA52UTF8, utf8_to_local},
        {"IA5 to UTF-8", false, ia5, IA52UTF8},       {"UTF-8 to IA5", false, IA52UTF8, UTF82IA5},
        {"BMP to UTF-8", false, IA52BMP, BMP2UTF8},   {"UTF-8 to BMP", false, IA52UTF8, UTF82BMP},
        {"T.61 to BMP", false, IA52T61, T612BMP},     {"IA5 to T.61", false, ia5, IA52T61},
    };
    std::vector<timed_case> cases;
    for (const auto& row : conversions) {
        if (row.local && !locale) continue;
        for (const size_t characters : {20, 1000}) {
            const auto run = [source = text(row.source, characters), convert = row.convert](size_t times) {
                for (; times != 0; --times) {
                    zr_buffer_t out(zr_normal);
                    if (convert(source, out) != 0) std::abort();
                    keep(out.data());
                }
            };
            const char* in_use = row.local ? "latin1" : "C";
            cases.push_back({row.name + ("/" + std::to_string(characters)) + "/convert",
                             static_cast<double>(characters), 1, [in_use] { std::setlocale(LC_CTYPE, in_use); }, run,
                             [] { std::setlocale(LC_CTYPE, "C"); }});
        }
    }
    add_beside_iconv(cases);
    return cases;
}

}  // namespace bench
