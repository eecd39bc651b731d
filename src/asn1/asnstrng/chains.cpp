#include "asn1/asnstrng/chains.h"

#include "asn1/asnstrng/code_sets.h"
#include "asn1/asnstrng/conversion.h"
#include "asn1/asnstrng/converters.h"

namespace {

using namespace zr;

using converter = int (*)(const zr_r_buffer_t& in, zr_buffer_t& out);

int refuse(const zr_r_buffer_t&, zr_buffer_t&) { return zr_err_conversion; }
int copy(const zr_r_buffer_t& in, zr_buffer_t& out) { return out.append(in); }

int in_printable(const zr_r_buffer_t& in, zr_buffer_t& out) {
    return all_printable(in) ? out.append(in) : zr_err_conversion;
}

// A converter that takes its cursor by value.
template <int (*Convert)(zr_r_buffer_t, zr_buffer_t&)>
int by_value(const zr_r_buffer_t& in, zr_buffer_t& out) {
    return Convert(in, out);
}
// One that has no name outside.
template <class Source, class Target>
int way(const zr_r_buffer_t& in, zr_buffer_t& out) {
    return convert<Source, Target>(in, out);
}

constexpr converter ia5_utf8 = by_value<IA52UTF8>;
constexpr converter bmp_utf8 = by_value<BMP2UTF8>;
constexpr converter u_utf8 = by_value<U2UTF8>;
constexpr converter t61_utf8 = way<t61_source, utf8_target>;
constexpr converter t61_print = way<t61_source, printable_target>;
constexpr converter u_print = way<universal_source, printable_target>;
constexpr converter bmp_print = way<bmp_source, printable_target>;
constexpr converter utf8_ia5 = by_value<UTF82IA5>;
constexpr converter utf8_t61 = way<utf8_source, t61_target>;
constexpr converter u_t61 = way<universal_source, t61_target>;
constexpr converter bmp_t61 = way<bmp_source, t61_target>;
constexpr converter utf8_u = by_value<UTF82U>;
constexpr converter t61_u = way<t61_source, universal_target>;
constexpr converter utf8_bmp = by_value<UTF82BMP>;

constexpr unsigned int code_set_count = 7;

// A row for each target, a column for each source, both in the order of index_of.
// clang-format off
constexpr converter chains[code_set_count][code_set_count] = {
    // from:        UTF-8         printable T.61       IA5           visible  universal  BMP
    /* UTF-8 */     {copy,         copy,    t61_utf8,  ia5_utf8,     refuse,  u_utf8,    bmp_utf8},
    /* printable */ {in_printable, copy,    t61_print, in_printable, refuse,  u_print,   bmp_print},
    /* T.61 */      {utf8_t61,     IA52T61, copy,      IA52T61,      refuse,  u_t61,     bmp_t61},
    /* IA5 */       {utf8_ia5,     copy,    T612IA5,   copy,         refuse,  U2IA5,     BMP2IA5},
    /* visible */   {in_printable, refuse,  t61_print, in_printable, copy,    u_print,   bmp_print},
    /* universal */ {utf8_u,       IA52U,   t61_u,     IA52U,        refuse,  copy,      BMP2U},
    /* BMP */       {utf8_bmp,     IA52BMP, T612BMP,   IA52BMP,      refuse,  U2BMP,     copy},
};
// clang-format on

unsigned int index_of(unsigned int code_set) {
    switch (code_set) {
        case zr_utf8:
            return 0;
        case zr_printable:
            return 1;
        case zr_t61:
            return 2;
        case zr_ia5:
            return 3;
        case zr_visible:
            return 4;
        case zr_universal:
            return 5;
        case zr_bmp:
            return 6;
        default:
            return code_set_count;
    }
}

}  // namespace

namespace zr {

int convert_text(unsigned int from, const zr_r_buffer_t& text, unsigned int to, zr_buffer_t& out) {
    const unsigned int source = index_of(from);
    const unsigned int target = index_of(to);
    if (source == code_set_count || target == code_set_count) return zr_err_conversion;
    return chains[target][source](text, out);
}

}  // namespace zr
