// Code set conversions. The first octet picks a converter, the second is the cursor's fill octet, the rest is the text.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

#include "asn1/asnstrng.h"
#include "asn1/status.h"

namespace {

using conversion = std::function<int(const zr_r_buffer_t&, zr_buffer_t&)>;

struct converter {
    conversion run;
    unsigned int input, output;  // octets of a character, at least and at most
    enum { resets, keeps, replaces } on_failure;
    conversion back;  // gives the text again, or null
};

const converter converters[] = {
    {IA52UTF8, 1, 2, converter::resets, UTF82IA5}, {BMP2UTF8, 2, 3, converter::resets, UTF82BMP},
    {U2UTF8, 4, 6, converter::resets, nullptr},    {UTF82U, 1, 4, converter::keeps, nullptr},
    {UTF82BMP, 1, 2, converter::keeps, nullptr},   {UTF82IA5, 1, 1, converter::keeps, nullptr},
    {U2BMP, 4, 2, converter::resets, BMP2U},       {U2IA5, 4, 1, converter::resets, IA52U},
    {BMP2U, 2, 4, converter::resets, U2BMP},       {BMP2IA5, 2, 1, converter::resets, IA52BMP},
    {IA52BMP, 1, 2, converter::resets, BMP2IA5},   {IA52U, 1, 4, converter::resets, U2IA5},
    {IA52P, 1, 1, converter::replaces, P2IA5},     {IA52V, 1, 1, converter::replaces, V2IA5},
    {P2IA5, 1, 1, converter::replaces, nullptr},   {V2IA5, 1, 1, converter::replaces, nullptr},
    {T612BMP, 1, 2, converter::resets, nullptr},   {T612IA5, 1, 1, converter::resets, nullptr},
    {IA52T61, 1, 2, converter::resets, nullptr},
};

constexpr unsigned int code_sets[] = {zr_utf8, zr_printable, zr_t61, zr_ia5, zr_visible, zr_universal, zr_bmp};

void require(bool holds) {
    if (!holds) std::abort();
}

bool is_status(int status) { return status == 0 || status == zr_err_conversion; }

void convert(const converter& c, const zr_r_buffer_t& text) {
    zr_buffer_t out(zr_normal);
    out.append("x");
    const unsigned int held = 1;
    const int status = c.run(text, out);
    require(is_status(status));
    const uint64_t characters = (uint64_t{text.remaining()} + c.input - 1) / c.input;
    require(out.length() <= held + characters * c.output);
    if (c.on_failure != converter::replaces || status != 0) require(out.length() >= held && *out.current() == 'x');
    if (status != 0 && c.on_failure != converter::keeps) require(out.length() == held);
    if (status != 0 || c.back == nullptr || text.remaining() % c.input != 0) return;

    zr_r_buffer_t converted(out);
    if (c.on_failure != converter::replaces) converted.move_to(out.current() + held, out.length() - held);
    zr_buffer_t again(zr_normal);
    require(c.back(converted, again) == 0 && again == text);
}

// Every way between two code sets: in place and into a buffer.
void convert_string(unsigned char ways, const zr_r_buffer_t& text) {
    constexpr int (zr_asn_charstring::*in_place[])() = {
        &zr_asn_charstring::convert2UTF8, &zr_asn_charstring::convert2printable, &zr_asn_charstring::convert2T61,
        &zr_asn_charstring::convert2IA5,  &zr_asn_charstring::convert2visible,   &zr_asn_charstring::convert2Univ,
        &zr_asn_charstring::convert2BMP,
    };
    constexpr int (zr_asn_charstring::*into[])(zr_buffer_t&) const = {
        &zr_asn_charstring::convert2UTF8, &zr_asn_charstring::convert2printable, &zr_asn_charstring::convert2T61,
        &zr_asn_charstring::convert2IA5,  &zr_asn_charstring::convert2visible,   &zr_asn_charstring::convert2Univ,
        &zr_asn_charstring::convert2BMP,
    };
    zr_asn_directoryString string(zr_normal);
    zr_r_buffer_t cursor(text);
    string.set_codeset(code_sets[ways % 7]);
    string.set_value_uninterpreted(cursor);
    const unsigned int target = ways / 7 % 7;
    zr_buffer_t out(zr_normal);
    require(is_status((string.*into[target])(out)));
    require(is_status((string.*in_place[target])()));
    require(is_status(string.normalize()));
    require(string.set_value_IA5(cursor, 1) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    // A block of its own for the text: its last octet is the block's.
    std::vector<unsigned char> octets(data + 2, data + size);
    zr_r_buffer_t text(octets.data(), static_cast<unsigned int>(octets.size()));
    text.set_fill_octet(data[1]);
    constexpr size_t count = std::size(converters);
    if (data[0] < count) {
        convert(converters[data[0]], text);
    } else {
        convert_string(static_cast<unsigned char>(data[0] - count), text);
    }
    return 0;
}
