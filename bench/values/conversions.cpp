#include <clocale>
#include <cstdio>
#include <cstdlib>

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

// The text in the code set that `form` makes of ISO 8859-1.
zr_buffer_t text(const converter& form, size_t characters) {
    zr_buffer_t latin(zr_normal);
    zr_buffer_t made(zr_normal);
    for (size_t i = 0; i < characters; ++i)
        latin.append(static_cast<unsigned char>(i % 10 == 5 ? 0xE9 : 'a' + i % 26));
    if (form(latin, made) != 0) std::abort();
    return made;
}

}  // namespace

std::vector<timed_case> conversion_cases() {
    const converter ia5 = [](const zr_r_buffer_t& in, zr_buffer_t& out) { return out.append(in); };
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
    return cases;
}

}  // namespace bench
