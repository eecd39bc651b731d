#include "json/document/scalars.h"

#include <charconv>
#include <cstring>
#include <string_view>
#include <system_error>

#include "asn1/load.h"
#include "json/base/hex.h"
#include "json/base/secrets.h"
#include "json/base/text.h"
#include "json/document/string_writer.h"

namespace zr::json {

namespace {

bool refuse(std::string& message, std::string_view found, std::string_view expected) {
    message = "found ";
    message.append(found).append(", expected ").append(expected);
    return false;
}

// As std::from_chars, which looks for an overflow at each digit; numbers that fit a member have none.
std::from_chars_result read_digits(const char* from, const char* end, int64_t& number) {
    constexpr std::ptrdiff_t most_digits = 10;
    const bool negative = from != end && *from == '-';
    const char* at = from + negative;
    if (end - at > most_digits || at == end) return std::from_chars(from, end, number);
    for (number = 0; at != end && *at >= '0' && *at <= '9'; ++at)
        number = number * 10 + (*at - '0');
    if (negative) number = -number;
    return {at, std::errc()};
}

bool read_number(std::string_view digits, member_filler& to, std::string& message) {
    int64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [behind, fault] = read_digits(digits.data(), end, number);
    const integer_range range = range_of(to.member().integer);
    if (behind == end && fault == std::errc() && number >= range.least && number <= range.most) {
        store_integer(to.add_place(), to.member().integer, static_cast<int32_t>(number));
        return true;
    }
    constexpr size_t longest = 40;
    std::string shown(digits.substr(0, longest));
    if (digits.size() > longest) shown += "...";
    if (behind == end)
        shown += ", which is out of range";
    else if (digits.find_first_of(".eE") != digits.npos)
        shown += digits.find('.') != digits.npos ? ", which is written with a fraction"
                                                 : ", which is written with an exponent";
    return refuse(message, shown, describe_scalar(to.member()));
}

// Makes room for a text of so many octets, behind which its end is already.
char* add_text(member_filler& to, size_t octets) {
    void* where = to.add_place();
    return place<char*>(where, 0) = static_cast<char*>(zeroed_block(octets + 1));
}

bool read_text(std::string_view text, member_filler& to, std::string& message, const char* zero) {
    if (text.find('\0') != text.npos) return refuse(message, zero, "a text: it would end there");
    std::memcpy(add_text(to, text.size()), text.data(), text.size());
    return true;
}

// Makes room for octets: of fixed ones there is as much as there is.
unsigned char* add_octets(member_filler& to, uint32_t count) {
    void* where = to.add_place();
    if (to.member().value == value_kind::fixed_octets) return static_cast<unsigned char*>(where);
    if (count == 0) return nullptr;
    auto* made = place<unsigned char*>(where, 0) = static_cast<unsigned char*>(zeroed_block(count));
    store_count(to.member(), to.structure(), count);
    return made;
}

// The number that canonical contents are; false for others, and for one that the member does not hold.
bool number_in(const unsigned char* contents, size_t length, integer_type type, int64_t& number) {
    if (length == 0 || length > 4) return false;
    uint32_t bits = (contents[0] & 0x80) != 0 ? ~uint32_t{0} : 0;
    for (size_t i = 0; i != length; ++i)
        bits = bits << 8 | contents[i];
    const bool repeats_sign =
        length > 1 && (contents[0] == 0 || contents[0] == 0xFF) && ((contents[0] ^ contents[1]) & 0x80) == 0;
    const bool is_unsigned = type.octets == 4 && !type.is_signed;  // goes out as the signed number of its bits
    number = is_unsigned ? int64_t{bits} : int64_t{static_cast<int32_t>(bits)};
    const integer_range range = range_of(type);
    return !repeats_sign && number >= range.least && number <= range.most;
}

// What a message says of the text that was found: nothing of a secret.
std::string shown(const field& member, std::string_view text) {
    return member.secret ? "something else" : in_quotes(text);
}

bool read_octets(std::string_view digits, member_filler& to, std::string& message) {
    const field& member = to.member();
    const size_t count = digits.size() / 2;
    const bool fixed = member.value == value_kind::fixed_octets;
    if (count > UINT32_MAX) return refuse(message, "too many octets", "at most 4294967295");
    if ((!fixed || digits.size() == size_t{member.size} * 2) &&
        read_hex(digits, add_octets(to, static_cast<uint32_t>(count))))
        return true;
    return refuse(message, shown(member, digits), describe_scalar(member));
}

void write_number(output& out, int64_t number) {
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    out.write({digits, static_cast<size_t>(end - digits)});
}

void write_octets(output& out, const unsigned char* octets, size_t count) {
    out.put('"');
    out.write_hex(octets, count);
    out.put('"');
}

void write_text(output& out, std::string_view all, bool spaced) {
    if (is_utf8(all)) return write_json_string(out, all);
    out.write(spaced ? "{\"hex\": " : "{\"hex\":");
    write_octets(out, reinterpret_cast<const unsigned char*>(all.data()), all.size());
    out.put('}');
}

}  // namespace

std::string describe_scalar(const field& member) {
    const std::string null = member.held == holding::optional ? " or null" : "";
    switch (member.value) {
        case value_kind::integer: {
            const integer_range range = range_of(member.integer);
            return "a whole number from " + std::to_string(range.least) + " to " + std::to_string(range.most) + null;
        }
        case value_kind::text:
        case value_kind::stored_text:
            return "a text: a string, or {\"hex\": \"...\"}" + null;
        case value_kind::octets:
            return describe_hex_form() + null;
        case value_kind::fixed_octets:
            return std::to_string(member.size) + " " + describe_hex_form() + null;
        case value_kind::version:
        case value_kind::record:
            break;
    }
    return "nothing";  // these are no scalars
}

bool read_scalar(const json_event& event, member_filler& to, std::string& message) {
    if (to.member().secret) {
        if (event.kind == json_kind::string && event.text == not_shown)
            return refuse(message, "\"***\", which stands for a secret that was not shown",
                          "the secret (decode --show-secrets gives it), or {\"hex\": \"2a2a2a\"}");
        if (event.kind != json_kind::string) return refuse(message, "something else", describe_scalar(to.member()));
    }
    switch (to.member().value) {
        case value_kind::integer:
            if (event.kind != json_kind::number) break;
            return read_number(event.text, to, message);
        case value_kind::text:
        case value_kind::stored_text:
            if (event.kind != json_kind::string) break;
            return read_text(event.text, to, message, "a zero character (\\u0000)");
        case value_kind::octets:
        case value_kind::fixed_octets:
            if (event.kind != json_kind::string) break;
            return read_octets(event.text, to, message);
        case value_kind::version:
        case value_kind::record:
            break;
    }
    return refuse(message, in_words(event), describe_scalar(to.member()));
}

bool has_hex_form(const field& member) { return is_text(member); }

const char* describe_hex_form() { return "octets as a string of hexadecimal digits"; }

bool read_hex_form(const json_event& event, member_filler& to, std::string& message) {
    if (event.kind != json_kind::string) return refuse(message, in_words(event), describe_hex_form());
    std::string text(event.text.size() / 2, 0);
    if (!read_hex(event.text, reinterpret_cast<unsigned char*>(text.data())))
        return refuse(message, shown(to.member(), event.text), describe_hex_form());
    return read_text(text, to, message, "a zero octet");
}

void add_missing_scalar(member_filler& to) {
    if (is_text(to.member())) add_text(to, 0);
}

void write_scalar(output& out, const field& member, const void* structure, const void* value, bool spaced) {
    switch (member.value) {
        case value_kind::integer:
            return write_number(out, number_at(value, member.integer));
        case value_kind::text:
        case value_kind::stored_text:
            return write_text(out, text_in(value), spaced);
        case value_kind::octets:
            if (value == nullptr) return out.write("\"\"");
            return write_octets(out, load<const unsigned char*>(value), octets_length(member, structure));
        case value_kind::fixed_octets:
            return write_octets(out, static_cast<const unsigned char*>(value), member.size);
        case value_kind::version:
        case value_kind::record:
            break;
    }
}

bool write_contents(output& out, const field& member, const unsigned char* contents, size_t length, bool spaced) {
    std::string_view text(reinterpret_cast<const char*>(contents), length);
    int64_t number = 0;
    switch (member.value) {
        case value_kind::integer:
            if (!number_in(contents, length, member.integer, number)) return false;
            write_number(out, number);
            return true;
        case value_kind::stored_text:
            if (text.empty() || text.back() != '\0') return false;
            text.remove_suffix(1);
            [[fallthrough]];
        case value_kind::text:
            if (text.find('\0') != text.npos) return false;
            write_text(out, text, spaced);
            return true;
        case value_kind::fixed_octets:
            if (length != member.size) return false;
            [[fallthrough]];
        case value_kind::octets:
            write_octets(out, contents, length);
            return true;
        case value_kind::version:
        case value_kind::record:
            break;
    }
    return false;
}

}  // namespace zr::json
