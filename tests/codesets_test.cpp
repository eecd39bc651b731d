// The conversions between code sets, against tables and rules stated here: Unicode's decompositions, T.61's code chart,
// and, for all of Unicode, what iconv of the C library says.
#include "asn1/asnstrng/converters.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "asn1/asnstrng/code_sets.h"
#include "support/allocations.h"
#include "support/ber.h"

namespace {

using zr_test::bytes;
using zr_test::hex;
using zr_test::input;
using octets = std::vector<unsigned char>;

constexpr int refused = 275063211;

using conversion = std::function<int(const zr_r_buffer_t&, zr_buffer_t&)>;
enum class form { ia5, bmp, universal, utf8 };

struct converter {
    const char* name;
    form from, to;
    bool keeps;  // what a failed conversion has appended
    conversion convert;
};

const converter converters[] = {
    {"IA52UTF8", form::ia5, form::utf8, false, IA52UTF8},   {"BMP2UTF8", form::bmp, form::utf8, false, BMP2UTF8},
    {"U2UTF8", form::universal, form::utf8, false, U2UTF8}, {"UTF82U", form::utf8, form::universal, true, UTF82U},
    {"UTF82BMP", form::utf8, form::bmp, true, UTF82BMP},    {"UTF82IA5", form::utf8, form::ia5, true, UTF82IA5},
    {"U2BMP", form::universal, form::bmp, false, U2BMP},    {"U2IA5", form::universal, form::ia5, false, U2IA5},
    {"BMP2U", form::bmp, form::universal, false, BMP2U},    {"BMP2IA5", form::bmp, form::ia5, false, BMP2IA5},
    {"IA52BMP", form::ia5, form::bmp, false, IA52BMP},      {"IA52U", form::ia5, form::universal, false, IA52U},
};

// How many octets follow each UTF-8 lead octet, and its bits.
struct lead_range {
    unsigned int first, last, following;
};
constexpr lead_range leads[] = {{0x00, 0x7F, 0}, {0xC0, 0xDF, 1}, {0xE0, 0xEF, 2},
                                {0xF0, 0xF7, 3}, {0xF8, 0xFB, 4}, {0xFC, 0xFD, 5}};

unsigned int width(form f) { return f == form::ia5 ? 1 : f == form::bmp ? 2 : 4; }

// The next character of `in`; none when it is malformed.
std::optional<uint32_t> character(form f, const octets& in, size_t& at, unsigned char fill) {
    const auto next = [&] { return at < in.size() ? in[at++] : fill; };
    uint32_t value = 0;
    if (f != form::utf8) {
        for (unsigned int i = width(f); i != 0; --i)
            value += static_cast<uint32_t>(next()) << (8 * (i - 1));
        return value;
    }
    const unsigned int lead = next();
    for (const lead_range& range : leads) {
        if (lead < range.first || lead > range.last) continue;
        // Each octet in its place: nothing says that it has six bits.
        value = (lead - range.first) << (6 * range.following);
        for (unsigned int i = range.following; i != 0; --i)
            value += (static_cast<uint32_t>(next()) - 0x80) << (6 * (i - 1));
        return value;
    }
    return std::nullopt;
}

// Appends a character; false when the form has no room for it.
bool write(form f, uint32_t value, octets& out) {
    if (f != form::utf8) {
        if (value > (width(f) == 4 ? UINT32_MAX : (1u << (8 * width(f))) - 1)) return false;
        for (unsigned int i = width(f); i != 0; --i)
            out.push_back(static_cast<unsigned char>(value >> (8 * (i - 1))));
        return true;
    }
    constexpr uint32_t largest[] = {0x7F, 0x7FF, 0xFFFF, 0x1FFFFF, 0x3FFFFFF, 0x7FFFFFFF};
    for (unsigned int following = 0; following < 6; ++following) {
        if (value > largest[following]) continue;
        octets character(following + 1);
        uint32_t left = following == 3 ? value & 0xFFFFF : value;  // bit 20 is lost
        for (unsigned int i = following; i != 0; --i, left /= 64)
            character[i] = static_cast<unsigned char>(0x80 + left % 64);
        character[0] = static_cast<unsigned char>(leads[following].first + left);
        out.insert(out.end(), character.begin(), character.end());
        break;
    }
    return true;
}

// Converts `in` behind an octet that `out` holds already, and compares status and output.
void check(const converter& c, octets& in, unsigned char fill = 0) {
    static octets expected;
    static zr_buffer_t out(zr_normal);
    expected.assign(1, 'x');
    int status = 0;
    for (size_t at = 0; at < in.size();) {
        const auto value = character(c.from, in, at, fill);
        if (value && write(c.to, *value, expected)) continue;
        status = refused;
        if (!c.keeps) expected.resize(1);
        break;
    }
    in.shrink_to_fit();  // a sanitizer sees what is read beyond
    zr_r_buffer_t cursor(in.data(), static_cast<unsigned int>(in.size()));
    cursor.set_fill_octet(fill);
    out.clear();
    out.append("x");
    const int found = c.convert(cursor, out);
    ASSERT_TRUE(found == status && out.length() == expected.size() &&
                std::equal(expected.begin(), expected.end(), out.data()))
        << c.name << " of " << hex(in) << ", fill " << int{fill} << ": " << found << ", " << hex(out) << " for "
        << hex(expected);
    ASSERT_TRUE(cursor.current() == in.data() && cursor.remaining() == in.size()) << c.name << " moves the cursor";
}

TEST(codesets, every_text_of_up_to_two_octets) {
    octets none, one(1), two(2);
    for (const converter& c : converters) {
        check(c, none);
        for (unsigned int first = 0; first < 256; ++first) {
            one[0] = two[0] = static_cast<unsigned char>(first);
            for (const unsigned char fill : bytes("00 80 ff"))
                check(c, one, fill);
            for (unsigned int second = 0; second < 256; ++second) {
                two[1] = static_cast<unsigned char>(second);
                check(c, two);
            }
        }
        if (HasFatalFailure()) return;
    }
}

// The lead octets that stand for all others: the first and the last of each kind.
constexpr char lead_octets[] = "00 7f 80 bf c0 df e0 ef f0 f7 f8 fb fc fd fe ff";

// With a sanitizer, which makes it slow, only those.
bool all_leads() {
#if defined(__has_feature)
    return !__has_feature(address_sanitizer);
#else
    return true;
#endif
}

TEST(codesets, utf8_texts_of_three_octets) {
    octets text(3);
    for (const converter& c : converters) {
        if (c.from != form::utf8) continue;
        for (unsigned int lead = 0; lead < 256; ++lead) {
            const octets kinds = bytes(lead_octets);
            if (!all_leads() && std::find(kinds.begin(), kinds.end(), lead) == kinds.end()) continue;
            for (unsigned int rest = 0; rest < 0x10000; ++rest) {
                text = {static_cast<unsigned char>(lead), static_cast<unsigned char>(rest >> 8),
                        static_cast<unsigned char>(rest)};
                check(c, text);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(codesets, texts_of_three_to_eight_octets_by_the_classes_of_their_octets) {
    const octets other = bytes("00 41 7f 80 a9 bf c3 e2 ff");
    for (const converter& c : converters)
        for (const unsigned char lead : bytes(lead_octets))
            for (const unsigned char second : other)
                for (const unsigned char third : other) {
                    octets text = {lead, second, third};
                    for (const unsigned char more : bytes("80 00 bf e9 41")) {
                        check(c, text, 0x9F);
                        text.push_back(more);
                    }
                    check(c, text);
                    if (HasFatalFailure()) return;
                }
}

// Every character of Unicode but the surrogates, and only to U+FFFFF, where UTF-8 as written here is UTF-8.
TEST(codesets, all_of_unicode_as_iconv_has_it) {
    octets universal, bmp;
    for (uint32_t value = 0; value <= 0xFFFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) continue;
        write(form::universal, value, universal);
        if (value <= 0xFFFF) write(form::bmp, value, bmp);
    }
    octets utf8(universal.size());
    iconv_t cd = iconv_open("UTF-8", "UCS-4BE");
    ASSERT_NE(reinterpret_cast<intptr_t>(cd), -1);
    auto* next = reinterpret_cast<char*>(universal.data());
    auto* end = reinterpret_cast<char*>(utf8.data());
    size_t left = universal.size();
    size_t room = utf8.size();
    EXPECT_EQ(iconv(cd, &next, &left, &end, &room), 0u);
    iconv_close(cd);
    utf8.resize(utf8.size() - room);

    // The BMP's part ends with U+FFFF.
    const octets last_of_bmp = bytes("ef bf bf");
    const auto bmp_end = std::search(utf8.begin(), utf8.end(), last_of_bmp.begin(), last_of_bmp.end()) + 3;
    const octets utf8_of_bmp(utf8.begin(), bmp_end);
    const auto check_long = [](const conversion& convert, const octets& in, const octets& expected) {
        zr_buffer_t out(zr_normal);
        EXPECT_EQ(convert(input(in), out), 0);
        EXPECT_EQ(octets(out.data(), out.data() + out.length()), expected);
    };
    check_long(U2UTF8, universal, utf8);
    check_long(UTF82U, utf8, universal);
    check_long(BMP2UTF8, bmp, utf8_of_bmp);
    check_long(UTF82BMP, utf8_of_bmp, bmp);
}

// Some of what is odd on purpose, in octets.
TEST(codesets, characters_that_are_odd_on_purpose) {
    // clang-format off
    const struct { const char* what; conversion convert; const char* in; int status; const char* out; } cases[] = {
        {"a cut character takes the fill octet", UTF82U, "c3", 0, "00 00 00 40"},
        {"values are modulo 2^32", UTF82U, "c0", 0, "ff ff ff 80"},
        {"such a value is no BMP character", UTF82BMP, "41 c0", refused, "00 41"},
        {"above the BMP", UTF82BMP, "f0 9f 98 80", refused, ""},
        {"bit 20 is lost", U2UTF8, "00 10 ff ff", 0, "f0 8f bf bf"},
        {"five octets", U2UTF8, "03 ff ff ff", 0, "fb bf bf bf bf"},
        {"six octets", U2UTF8, "7f ff ff ff", 0, "fd bf bf bf bf bf"},
        {"no form, no octets", U2UTF8, "80 00 00 00 00 00 00 41", 0, "41"},
        {"an accent at the end", T612BMP, "41 cc", 0, "00 41"},
        {"beyond Latin-1", T612IA5, "41 e0", refused, ""}, {"by way of BMP", T612IA5, "c2 65 a8", 0, "e9 a4"}
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        zr_buffer_t out(zr_normal);
        EXPECT_EQ(c.convert(input(c.in), out), c.status);
        EXPECT_EQ(hex(out), c.out);
    }
}

// Letters and their accents in Unicode's decompositions (UnicodeData.txt), U+00C0 to U+017F in rows of 16. Of the
// marks, - is the macron, u breve, o ring, = double acute, ; ogonek, v caron, : diaeresis, and , cedilla.
constexpr char decompositions[] =
    "A` A' A^ A~ A: Ao    C, E` E' E^ E: I` I' I^ I: "  // U+00C0
    "   N~ O` O' O^ O~ O:       U` U' U^ U: Y'       "
    "a` a' a^ a~ a: ao    c, e` e' e^ e: i` i' i^ i: "
    "   n~ o` o' o^ o~ o:       u` u' u^ u: y'    y: "
    "A- a- Au au A; a; C' c' C^ c^ C. c. Cv cv Dv dv "  // U+0100
    "      E- e- Eu eu E. e. E; e; Ev ev G^ g^ Gu gu "
    "G. g. G, g, H^ h^       I~ i~ I- i- Iu iu I; i; "
    "I.          J^ j^ K, k,    L' l' L, l, Lv lv    "
    "         N' n' N, n, Nv nv          O- o- Ou ou "
    "O= o=       R' r' R, r, Rv rv S' s' S^ s^ S, s, "
    "Sv sv T, t, Tv tv       U~ u~ U- u- Uu uu Uo uo "
    "U= u= U; u; W^ w^ Y^ y^ Y: Z' z' Z. z. Zv zv    ";

// The mark of each accent octet from C1; CC has none.
constexpr char marks[] = "`'^~-u.::o, =;v";

// The two upper parts of T.61's code chart, A0 to BF and E0 to FF; _ is nothing.
constexpr char16_t chart_a0[] = u"_¡¢£$¥#§¤__«____°±²³×µ¶·÷__»¼½¾¿";
constexpr char16_t chart_e0[] = u"ΩÆÐªĦ_ĲĿŁØŒºÞŦŊŉΚæđδħıĳŀłøœßþŧŋ_";

bool is_accent(unsigned int octet) { return octet >= 0xC1 && octet <= 0xCF; }
bool is_control(unsigned int octet) { return std::string("\b\n\f\r\x1A").find(static_cast<char>(octet)) < 5; }

// The character that one octet of T.61 is, 0 for none.
unsigned int single(unsigned int octet) {
    if (is_control(octet)) return octet;
    if (octet == 0x24) return 0xA4;
    if (octet >= 0x20 && octet <= 0x7E) return octet;
    if (octet < 0xA0 || (octet >= 0xC0 && octet < 0xE0)) return 0;
    const char16_t found = octet >= 0xE0 ? chart_e0[octet - 0xE0] : chart_a0[octet - 0xA0];
    return found == u'_' ? 0u : found;
}

// What an accent octet and a letter are together, 0 for nothing.
unsigned int composed(unsigned int accent, unsigned int letter) {
    const char mark = marks[accent - 0xC1];
    if (mark == ' ' || (letter == 'A' && (mark == '-' || mark == 'u' || mark == ';'))) return 0;
    if (letter == 'n' && mark == 'v') return 'H';
    for (unsigned int i = 0; i < 0x180 - 0xC0; ++i)
        if (static_cast<unsigned char>(decompositions[3 * i]) == letter && decompositions[3 * i + 1] == mark)
            return 0xC0 + i;
    return 0;
}

// The text as BMP, or nothing when it is refused.
std::optional<octets> t61_text(const octets& text) {
    octets out;
    unsigned int accent = 0;
    for (const unsigned char octet : text) {
        if (is_accent(octet)) {
            if (accent != 0) return std::nullopt;
            accent = octet;
            continue;
        }
        const unsigned int value = accent == 0 || is_control(octet) ? single(octet) : composed(accent, octet);
        if (value == 0) return std::nullopt;
        write(form::bmp, value, out);
        accent = 0;
    }
    return out;
}

// What a conversion appends, or nothing when the text is refused.
std::optional<octets> converted(const conversion& convert, const octets& text) {
    zr_buffer_t out(zr_normal);
    out.append("x");
    const int status = convert(input(text), out);
    EXPECT_TRUE(status == 0 || (status == refused && out.length() == 1)) << status << ", " << hex(out);
    EXPECT_EQ(out.data()[0], 'x');
    if (status != 0) return std::nullopt;
    return octets(out.data() + 1, out.data() + out.length());
}

void check_t61(const octets& text) { ASSERT_EQ(converted(T612BMP, text), t61_text(text)) << hex(text); }

TEST(codesets, t61_texts_of_up_to_two_octets) {
    for (unsigned int first = 0; first < 256; ++first) {
        check_t61({static_cast<unsigned char>(first)});
        for (unsigned int second = 0; second < 256; ++second)
            check_t61({static_cast<unsigned char>(first), static_cast<unsigned char>(second)});
        if (HasFatalFailure()) return;
    }
}

TEST(codesets, t61_accents_inside_texts) {
    const octets around = bytes("41 6e 24 0a 1a 20 7f a4 c0 c1 c8 cc cf e0 e5 ff");
    for (const unsigned char first : around)
        for (const unsigned char second : around)
            for (const unsigned char third : around)
                for (const unsigned char fourth : around) {
                    check_t61({first, second, third, fourth});
                    if (HasFatalFailure()) return;
                }
}

// The other direction follows from the first: the octet of T.61 that is the character (the upper one of two), else an
// accent and its letter. Two characters differ on purpose.
TEST(codesets, latin1_to_t61) {
    for (unsigned int character = 0; character < 256; ++character) {
        std::optional<octets> expected;
        for (unsigned int octet = 0; octet < 256; ++octet)
            if (single(octet) == character && character != 0) expected = {static_cast<unsigned char>(octet)};
        for (unsigned int accent = 0xC1; accent <= 0xCF && character != 0; ++accent)
            for (unsigned int letter = 'A'; letter <= 'z' && accent != 0xC9 && !expected; ++letter)
                if (composed(accent, letter) == character)
                    expected = {static_cast<unsigned char>(accent), static_cast<unsigned char>(letter)};
        if (character == 0xAA) expected.reset();
        if (character == 0xF0) expected = {0xF2};
        if (expected) expected->insert(expected->begin(), 'a');
        EXPECT_EQ(converted(IA52T61, {'a', static_cast<unsigned char>(character)}), expected) << character;
    }
}

TEST(codesets, tables_of_characters) {
    const std::string printable = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 '()+,-./:?";
    ASSERT_EQ(printable.size(), 73u);
    for (int octet = 0; octet < 256; ++octet) {
        const int expected = octet != 0 && printable.find(static_cast<char>(octet)) != std::string::npos ? 1 : 0;
        const auto index = static_cast<size_t>(octet);
        EXPECT_EQ(printableStringCharacterIA5_table[index], expected) << octet;
        EXPECT_EQ(visibleStringCharacterIA5_table[index], expected) << octet;
        EXPECT_EQ(IA52Local_table[index], octet < 0x80 ? octet : -1) << octet;
        EXPECT_EQ(Local2IA5_table[static_cast<size_t>(static_cast<signed char>(octet) + 128)],
                  octet < 0x80 ? octet : -1);
        for (const auto convert : {IA52P, IA52V, P2IA5, V2IA5}) {
            const bool accepted = expected != 0 || convert == P2IA5 || convert == V2IA5;
            const octets text = {'a', static_cast<unsigned char>(octet)};
            zr_buffer_t out(zr_normal);
            out.append("x");
            EXPECT_EQ(convert(input(text), out), accepted ? 0 : refused);
            EXPECT_EQ(hex(out), accepted ? hex(text) : "78") << octet;  // replaced
        }
    }
}

// A text of some megabytes is moved a few times only: the number of blocks grows with the logarithm of its length.
TEST(codesets, long_texts_are_converted_in_linear_time) {
    const octets text(size_t{1} << 22, 'A');
    const input in(text);
    zr_buffer_t out(zr_normal);
    zr_test::allocations watch;
    EXPECT_EQ(IA52U(in, out), 0);
    EXPECT_LT(watch.made(), 60u);
    EXPECT_EQ(out.length(), text.size() * 4);
}

}  // namespace
