#include "json/ber/value.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "json/base/text.h"
#include "json/ber/asn1_types.h"

namespace zr::json {

namespace {

constexpr size_t most_hex = 24;      // octets that are shown as digits
constexpr size_t most_text = 72;     // octets that are shown as text
constexpr size_t most_decimal = 64;  // octets of a number that is shown in decimal digits

// Where values are written, and how much of long ones.
struct value_output {
    output& out;
    const value_size size;

    // Octets that are shown of so many.
    size_t shown(size_t count, size_t most) const { return size == value_size::whole ? count : std::min(count, most); }
    size_t shown_hex(size_t count) const { return shown(count, most_hex); }
};

void write_length(const value_output& to, size_t shown, size_t all) {
    if (shown == all) return;
    to.out.write(" ... (");
    write_number(to.out, all);
    to.out.write(" octets)");
}

void write_octets(const value_output& to, const unsigned char* octets, size_t count) {
    to.out.write_hex(octets, to.shown_hex(count));
}

// Contents that are not what their type asks for, so that nobody takes the digits for a value.
void write_damaged(const value_output& to, const unsigned char* octets, size_t count) {
    to.out.write("octets ");
    write_octets(to, octets, count);
    write_length(to, to.shown_hex(count), count);
}

// Where a text may be cut: not within a character.
size_t cut(std::string_view text) {
    if (text.size() <= most_text) return text.size();
    size_t at = most_text;
    while (at > most_text - 3 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80)
        --at;
    return at;
}

// In pieces, so that the size of a text takes no memory.
void write_text(const value_output& to, std::string_view text) {
    to.out.put('"');
    size_t shown = 0;
    do {
        const std::string_view piece = text.substr(shown, cut(text.substr(shown)));
        bool plain = true;
        for (char c : piece)
            plain = plain && c >= ' ' && c <= '~' && c != '\\';
        if (plain)
            to.out.write(piece);
        else
            to.out.write(printable(piece));
        shown += piece.size();
    } while (to.size == value_size::whole && shown != text.size());
    to.out.put('"');
    write_length(to, shown, text.size());
}

void append_utf8(std::string& text, uint32_t code_point) {
    if (code_point < 0x80) {
        text += static_cast<char>(code_point);
    } else if (code_point < 0x800) {
        text += static_cast<char>(0xC0 | code_point >> 6);
        text += static_cast<char>(0x80 | (code_point & 0x3F));
    } else {
        if (code_point < 0x10000) {
            text += static_cast<char>(0xE0 | code_point >> 12);
        } else {
            text += static_cast<char>(0xF0 | (code_point >> 18 & 7));
            text += static_cast<char>(0x80 | (code_point >> 12 & 0x3F));
        }
        text += static_cast<char>(0x80 | (code_point >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (code_point & 0x3F));
    }
}

// BMPString and UniversalString. Units that are no characters come out as octets that are not UTF-8, and so escaped.
void write_wide_text(const value_output& to, const unsigned char* octets, size_t count, size_t unit) {
    if (count % unit != 0) return write_damaged(to, octets, count);
    const size_t shown = to.shown(count, most_text);
    to.out.put('"');
    for (size_t at = 0; at != shown;) {
        std::string text;
        for (const size_t end = at + std::min(shown - at, most_text); at != end; at += unit) {
            uint32_t code_point = 0;
            for (size_t k = 0; k < unit; ++k)
                code_point = code_point << 8 | octets[at + k];
            append_utf8(text, std::min<uint32_t>(code_point, 0x1FFFFF));
        }
        to.out.write(printable(text));
    }
    to.out.put('"');
    write_length(to, shown, count);
}

// The decimal digits of an unsigned number in any count of octets: repeated division by 10^9.
std::string decimal(const unsigned char* octets, size_t count) {
    constexpr uint64_t unit = 1000000000;
    unsigned char digits[most_decimal];  // of the quotient, to the base 256; those before `first` are 0
    std::copy(octets, octets + count, digits);
    std::string text;
    for (size_t first = 0; first != count;) {
        uint64_t rest = 0;
        for (size_t i = first; i < count; ++i) {
            rest = rest << 8 | digits[i];
            digits[i] = static_cast<unsigned char>(rest / unit);  // rest was below 10^9
            rest %= unit;
        }
        while (first != count && digits[first] == 0)
            ++first;
        std::string part = std::to_string(rest);
        if (first != count) part.insert(0, 9 - part.size(), '0');
        text.insert(0, part);
    }
    return text;
}

// Octets that only repeat the sign are no part of the number.
void write_integer(const value_output& to, const unsigned char* octets, size_t count) {
    if (count == 0) return;
    const bool negative = (octets[0] & 0x80) != 0;
    const unsigned char sign = negative ? 0xFF : 0;
    while (count > 1 && octets[0] == sign && ((octets[1] & 0x80) != 0) == negative) {
        ++octets;
        --count;
    }
    if (count > most_decimal) {
        to.out.write("0x");
        write_octets(to, octets, count);
        return write_length(to, to.shown_hex(count), count);
    }
    if (negative) to.out.put('-');
    if (count <= sizeof(uint64_t)) {
        uint64_t bits = negative ? ~uint64_t{0} : 0;
        for (size_t i = 0; i != count; ++i)
            bits = bits << 8 | octets[i];
        return write_number(to.out, negative ? ~bits + 1 : bits);
    }
    unsigned char magnitude[most_decimal];
    unsigned carry = negative ? 1 : 0;
    for (size_t i = count; i-- != 0; carry >>= 8) {
        carry += octets[i] ^ sign;
        magnitude[i] = static_cast<unsigned char>(carry);
    }
    to.out.write(decimal(magnitude, count));
}

// What is wrong with the contents of an OBJECT IDENTIFIER or RELATIVE-OID (X.690, 8.19 and 8.20); null when nothing is.
const char* wrong_identifier(const unsigned char* contents, size_t count) {
    if (count == 0) return "an identifier has at least one octet";
    if ((contents[count - 1] & 0x80) != 0) return "the last number is cut off";
    for (size_t i = 0; i != count; ++i)
        if (contents[i] == 0x80 && (i == 0 || (contents[i - 1] & 0x80) == 0)) return "a number in it begins with 80";
    return nullptr;
}

// X.690, 8.19: seven bits an octet; the first number carries two arcs. False when there are none to show: damaged, or
// larger than `most_decimal` octets.
bool write_identifier(output& out, const unsigned char* octets, size_t count, bool relative) {
    constexpr size_t most = 128;  // octets
    if (count > most || wrong_identifier(octets, count) != nullptr) return false;
    std::string text;
    for (size_t begin = 0, end = 0; begin != count; begin = end) {
        while ((octets[end++] & 0x80) != 0) {
        }
        const size_t bits = 7 * (end - begin);
        if (bits > 8 * most_decimal) return false;
        unsigned char arc[most_decimal] = {};
        const size_t size = (bits + 7) / 8;
        for (size_t i = begin; i != end; ++i) {
            unsigned carry = octets[i] & 0x7Fu;
            for (size_t k = size; k-- != 0; carry >>= 8) {
                carry |= static_cast<unsigned>(arc[k]) << 7;
                arc[k] = static_cast<unsigned char>(carry);
            }
        }
        if (begin == 0 && !relative) {
            const bool small = end == 1 && octets[0] < 80;
            const unsigned first = small ? octets[0] / 40u : 2;
            unsigned borrow = 40 * first;
            for (size_t k = size; k-- != 0 && borrow != 0;) {
                const unsigned there = arc[k];
                arc[k] = static_cast<unsigned char>(there - borrow);
                borrow = there < borrow ? 1 : 0;
            }
            text = std::to_string(first);
        }
        text += (text.empty() ? "" : ".") + decimal(arc, size);
    }
    out.write(text);
    return true;
}

// Digits, and the same as text where it is one.
void write_octet_string(const value_output& to, const unsigned char* octets, size_t count) {
    if (count == 0) return;
    const size_t shown = to.shown_hex(count);
    write_octets(to, octets, count);
    bool text = true;
    for (size_t i = 0; i < shown; ++i)
        text = text && octets[i] >= ' ' && octets[i] <= '~';
    if (text) {
        to.out.write(" \"");
        to.out.write(octets, shown);
        to.out.put('"');
    }
    write_length(to, shown, count);
}

void write_bits(const value_output& to, const unsigned char* octets, size_t count) {
    if (count == 0) return;
    if (count == 1 && octets[0] == 0) return to.out.write("no bits");
    write_octets(to, octets + 1, count - 1);
    if (octets[0] != 0) {
        to.out.write(count == 1 ? "unused bits: " : ", unused bits: ");
        write_number(to.out, octets[0]);
    }
    write_length(to, to.shown_hex(count - 1), count - 1);
}

// Of what was cut off: whether the first octets say something without the others. Those of a number are another number.
bool is_cut_well(asn1_contents contents) {
    switch (contents) {
        case asn1_contents::octets:
        case asn1_contents::text:
        case asn1_contents::text_of_2:
        case asn1_contents::text_of_4:
            return true;
        case asn1_contents::boolean:
        case asn1_contents::integer:
        case asn1_contents::bits:
        case asn1_contents::null:
        case asn1_contents::identifier:
            break;
    }
    return false;
}

}  // namespace

void write_number(output& out, uint64_t number, size_t width) {
    constexpr size_t most = 20;  // digits, and the widest column
    char text[2 * most + 1] = "                    ";
    char* const digits = text + most;
    const auto count = static_cast<size_t>(std::to_chars(digits, digits + most, number).ptr - digits);
    const size_t blanks = count < width ? std::min(width, most) - count : 0;
    out.write(digits - blanks, blanks + count);
}

void write_value(output& out, const ber_item& item, const unsigned char* contents, value_size size) {
    const value_output to{out, size};
    const size_t count = item.length;
    const asn1_contents how = item.cls == 0 ? universal_type(item.tag).contents : asn1_contents::octets;
    const bool cut = item.damage == ber_damage::too_long && !is_cut_well(how);
    if (item.constructed || cut) return write_damaged(to, contents, count);
    switch (how) {
        case asn1_contents::octets:
            return write_octet_string(to, contents, count);
        case asn1_contents::boolean:
            if (count == 1) return out.write(*contents == 0 ? "FALSE" : "TRUE");
            break;
        case asn1_contents::integer:
            return write_integer(to, contents, count);
        case asn1_contents::bits:
            return write_bits(to, contents, count);
        case asn1_contents::identifier:
            if (write_identifier(out, contents, count, item.tag == tag_relative_oid)) return;
            break;
        case asn1_contents::text:
            return write_text(to, {reinterpret_cast<const char*>(contents), count});
        case asn1_contents::text_of_2:
            return write_wide_text(to, contents, count, 2);
        case asn1_contents::text_of_4:
            return write_wide_text(to, contents, count, 4);
        case asn1_contents::null:
            break;
    }
    write_damaged(to, contents, count);
}

const char* wrong_contents(const ber_item& item, const unsigned char* contents) {
    if (item.cls != 0 || item.damage != ber_damage::none) return nullptr;
    const asn1_type& type = universal_type(item.tag);
    if (type.form == asn1_form::constructed && !item.constructed)
        return "the primitive form, which this type does not have";
    if (type.form == asn1_form::primitive && item.constructed)
        return "the constructed form, which this type does not have";
    if (item.constructed) return nullptr;
    switch (type.contents) {
        case asn1_contents::boolean:
            return item.length == 1 ? nullptr : "a BOOLEAN has one octet";
        case asn1_contents::integer:
            return item.length != 0 ? nullptr : "a number has at least one octet";
        case asn1_contents::bits:
            if (item.length == 0) return "a BIT STRING has at least one octet";
            if (*contents > 7) return "there are at most 7 unused bits";
            return item.length == 1 && *contents != 0 ? "there are no bits that could be unused" : nullptr;
        case asn1_contents::null:
            return item.length == 0 ? nullptr : "a NULL has no contents";
        case asn1_contents::identifier:
            return wrong_identifier(contents, item.length);
        case asn1_contents::octets:
        case asn1_contents::text:
        case asn1_contents::text_of_2:
        case asn1_contents::text_of_4:
            break;
    }
    return nullptr;
}

}  // namespace zr::json
