// The conversions between code sets, against tables: characters in every form, Unicode's decompositions, T.61's code
// chart, and, for all of Unicode, what iconv of the C library says.
#include "asn1/asnstrng/converters.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <sys/mman.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "asn1/asnstrng/code_sets.h"
#include "asn1/utf8.h"
#include "support/allocations.h"
#include "support/ber.h"

namespace zr_test {
namespace {

using octets = std::vector<unsigned char>;

constexpr int refused = 275063211;

using conversion = std::function<int(const zr_r_buffer_t&, zr_buffer_t&)>;

// What a conversion answers, and what it appends to an octet that is there already.
struct outcome {
    int status;
    octets appended;
};
// The text begins `offset` octets into its block.
outcome run(const conversion& convert, octets text, unsigned char fill = 0, unsigned int offset = 0) {
    const auto count = static_cast<unsigned int>(text.size());
    text.insert(text.begin(), offset, 0x80);
    input cursor(text);
    cursor.move_to(cursor.current() + offset, count);
    cursor.set_fill_octet(fill);
    zr_buffer_t out(32 * offset, zr_secure);
    out.clear();
    out.append("x");
    const unsigned int capacity = out.capacity();
    const int status = convert(cursor, out);
    EXPECT_EQ(cursor.consumed(), offset);
    // Nothing is left behind the text in a block that held only zeros.
    if (status == 0 && out.capacity() == capacity) {
        EXPECT_TRUE(std::all_of(out.data() + out.length(), out.data() + capacity, [](auto octet) {
            return octet == 0;
        })) << hex(text);
    }
    EXPECT_EQ(out.length() == 0 ? 0 : out.data()[0], 'x');
    return {status, octets(out.data() + 1, out.data() + out.length())};
}

// Characters in every form; null where they have none. The first and the last of each length of UTF-8 are among them.
enum form { utf8, universal, bmp, ia5, others };
constexpr const char* letter_a[] = {"41 ", "00 00 00 41 ", "00 41 ", "41 "};
const char* const characters[][4] = {
    {"00 7f", "00 00 00 00 00 00 00 7f", "00 00 00 7f", "00 7f"},
    {"c2 80 c3 bf", "00 00 00 80 00 00 00 ff", "00 80 00 ff", "80 ff"},
    {"c4 80 df bf", "00 00 01 00 00 00 07 ff", "01 00 07 ff", nullptr},
    {"e0 a0 80 ef bf bf", "00 00 08 00 00 00 ff ff", "08 00 ff ff", nullptr},
    {"ed a0 80 ed bf bf", "00 00 d8 00 00 00 df ff", "d8 00 df ff", nullptr},  // surrogates as they stand
    {"f0 90 80 80 f3 bf bf bf", "00 01 00 00 00 0f ff ff", nullptr, nullptr},
    {"f8 88 80 80 80 fb bf bf bf bf", "00 20 00 00 03 ff ff ff", nullptr, nullptr},
    {"fc 84 80 80 80 80 fd bf bf bf bf bf", "04 00 00 00 7f ff ff ff", nullptr, nullptr},
};

// IA52P and IA52V replace what there was.
template <int (*Convert)(const zr_r_buffer_t&, zr_buffer_t&)>
int appending(const zr_r_buffer_t& in, zr_buffer_t& out) {
    zr_buffer_t replaced(zr_secure);
    const int status = Convert(in, replaced);
    out.append(replaced);
    return status;
}

const struct {
    const char* name;
    form from, to;
    bool keeps;  // what stands before a character that is refused
    conversion convert;
} converters[] = {
    {"IA52UTF8", ia5, utf8, false, IA52UTF8},
    {"BMP2UTF8", bmp, utf8, false, BMP2UTF8},
    {"U2UTF8", universal, utf8, false, U2UTF8},
    {"UTF82U", utf8, universal, true, UTF82U},
    {"UTF82BMP", utf8, bmp, true, UTF82BMP},
    {"UTF82IA5", utf8, ia5, true, UTF82IA5},
    {"U2BMP", universal, bmp, false, U2BMP},
    {"U2IA5", universal, ia5, false, U2IA5},
    {"BMP2U", bmp, universal, false, BMP2U},
    {"BMP2IA5", bmp, ia5, false, BMP2IA5},
    {"IA52BMP", ia5, bmp, false, IA52BMP},
    {"IA52U", ia5, universal, false, IA52U},
    // Texts that the first table has nothing for: of one octet a letter.
    {"T612BMP", others, others, false, T612BMP},
    {"T612IA5", others, others, false, T612IA5},
    {"IA52T61", others, others, false, IA52T61},
    {"IA52P", others, others, false, appending<IA52P>},
    {"IA52V", others, others, false, appending<IA52V>},
};

TEST(codesets, every_form_into_every_other) {
    for (const auto& c : converters) {
        if (c.from == others) continue;
        for (const auto& forms : characters) {
            if (forms[c.from] == nullptr) continue;
            SCOPED_TRACE(std::string(c.name) + " of " + forms[c.from]);
            const char* out = forms[c.to];
            const auto [status, appended] = run(c.convert, bytes(letter_a[c.from] + std::string(forms[c.from])));
            EXPECT_EQ(status, out != nullptr ? 0 : refused);
            EXPECT_EQ(appended, bytes((out != nullptr || c.keeps ? letter_a[c.to] : "") +
                                      std::string(out != nullptr ? out : "")));
        }
        EXPECT_EQ(run(c.convert, {}).status, 0);
    }
}

// Words of letters are the same as letter by letter: a text is what its characters are alone, wherever one that is no
// letter stands in it. Over all of these every length comes with every place and every alignment.
TEST(codesets, one_odd_character_anywhere) {
    for (const auto& c : converters) {
        const unsigned int width = c.from == universal ? 4 : c.from == bmp ? 2 : 1;
        const auto character = [width](uint32_t value) {
            octets text;
            for (unsigned int i = width; i != 0; --i)
                text.push_back(static_cast<unsigned char>(value >> 8 * (i - 1)));
            return text;
        };
        octets letters[26], letters_alone[26];
        for (unsigned int i = 0; i < 26; ++i) {
            letters[i] = character('a' + i);
            letters_alone[i] = run(c.convert, letters[i]).appended;
        }
        for (uint32_t k = 0; k < 256; ++k) {
            // Any octet, with those behind it that it may take with it; else the numbers around the powers of two.
            octets odd = character(width == 1 ? k : (uint32_t{1} << k % 32) - k / 32 % 2);
            if (width == 1) odd.insert(odd.end(), 5, 'a');
            const outcome odd_alone = run(c.convert, odd);
            for (unsigned int length = 0; length <= 40; ++length) {
                for (unsigned int place = k % 8; place <= length; place += 8) {
                    octets text, expected;
                    for (unsigned int i = 0; i <= length; ++i) {
                        const octets& next = i == place ? odd : letters[i % 26];
                        const octets& alone = i == place ? odd_alone.appended : letters_alone[i % 26];
                        text.insert(text.end(), next.begin(), next.end());
                        if (odd_alone.status == 0 || (c.keeps && i <= place))
                            expected.insert(expected.end(), alone.begin(), alone.end());
                    }
                    const auto [status, appended] = run(c.convert, text, 0, (k / 8 + length) % 16);
                    ASSERT_EQ(status, odd_alone.status) << c.name << " of " << hex(text);
                    ASSERT_EQ(appended, expected) << c.name << " of " << hex(text);
                }
            }
        }
    }
}

// Short texts at the beginning of a page, before which there is none: nothing there is read.
TEST(codesets, nothing_before_a_text_is_read) {
    constexpr size_t page = 65536;
    void* const pages = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    ASSERT_EQ(mprotect(pages, page, PROT_NONE), 0);
    auto* const text = static_cast<unsigned char*>(pages) + page;
    for (const auto& c : converters) {
        for (unsigned int length = 0; length < 16; ++length) {
            std::fill(text, text + length, static_cast<unsigned char>(c.from == universal || c.from == bmp ? 0 : 'a'));
            zr_buffer_t out(64, zr_normal);
            EXPECT_EQ(c.convert({text, length}, out), 0) << c.name;
        }
    }
    munmap(pages, 2 * page);
}

// A character needs no more room than its own.
TEST(codesets, where_one_octet_is_left_in_the_block) {
    for (const unsigned char letter : {'a', '\xE9'}) {
        zr_buffer_t out(1, zr_normal);
        while (out.length() + 1 < out.capacity())
            out.append('x');
        const unsigned int capacity = out.capacity();
        EXPECT_EQ(IA52T61(input(octets{letter}), out), 0);
        EXPECT_EQ(out.capacity() == capacity, letter == 'a');
        EXPECT_LE(out.length(), out.capacity());
    }
}

// Nothing of a text stays in a block that was too small, or in what a secure buffer releases.
TEST(codesets, secure_texts_are_wiped) {
    for (const auto& c : converters) {
        octets text;
        for (unsigned int i = 0; i < 3000; ++i) {
            if (c.from == universal || c.from == bmp) text.insert(text.end(), c.from == bmp ? 1 : 3, 0);
            text.push_back(static_cast<unsigned char>('a' + i % 26));
        }
        const octets part = run(c.convert, octets(text.begin(), text.begin() + 32)).appended;
        const std::string secret(part.begin(), part.end());
        const input in(text);
        for (const security_t security : {zr_normal, zr_secure}) {
            const zr_test::secret_search search({secret});
            {
                zr_buffer_t out(security);
                EXPECT_EQ(c.convert(in, out), 0);
                EXPECT_NE(std::string_view(reinterpret_cast<char*>(out.data()), out.length()).find(secret),
                          secret.npos);
            }
            EXPECT_EQ(search.found() != 0, security == zr_normal) << c.name;
        }
    }
}

TEST(codesets, utf8_lead_octets) {
    const std::pair<unsigned int, size_t> following[] = {{0xFC, 5}, {0xF8, 4}, {0xF0, 3}, {0xE0, 2}, {0xC0, 1}, {0, 0}};
    for (unsigned int lead = 0; lead < 256; ++lead) {
        const size_t count = std::find_if(std::begin(following), std::end(following), [&](const auto& row) {
                                 return lead >= row.first;
                             })->second;
        const bool leads = lead < 0x80 || (lead >= 0xC0 && lead < 0xFE);
        // Letters may follow, which are characters of their own behind the one that begins here.
        const auto [status, appended] = run(UTF82U, bytes(hex({static_cast<unsigned char>(lead)}) + "41 41 41 41 41"));
        EXPECT_EQ(status, leads ? 0 : refused) << lead;
        EXPECT_EQ(appended.size(), leads ? 4 * (6 - count) : 0) << lead;
    }
}

// Every character of Unicode but the surrogates, and only to U+FFFFF, where UTF-8 as written here is UTF-8.
TEST(codesets, all_of_unicode_as_iconv_has_it) {
    octets ucs4, ucs2;
    for (uint32_t value = 0; value <= 0xFFFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) continue;
        const auto part = [value](int shift) { return static_cast<unsigned char>(value >> shift); };
        ucs4.insert(ucs4.end(), {0, part(16), part(8), part(0)});
        if (value <= 0xFFFF) ucs2.insert(ucs2.end(), {part(8), part(0)});
    }
    octets utf8_octets(ucs4.size());
    iconv_t cd = iconv_open("UTF-8", "UCS-4BE");
    ASSERT_NE(reinterpret_cast<intptr_t>(cd), -1);
    auto* next = reinterpret_cast<char*>(ucs4.data());
    auto* end = reinterpret_cast<char*>(utf8_octets.data());
    size_t left = ucs4.size();
    size_t room = utf8_octets.size();
    EXPECT_EQ(iconv(cd, &next, &left, &end, &room), 0u);
    iconv_close(cd);
    utf8_octets.resize(utf8_octets.size() - room);

    // The BMP's part ends with U+FFFF.
    const octets last = bytes("ef bf bf");
    const octets utf8_of_bmp(utf8_octets.begin(),
                             std::search(utf8_octets.begin(), utf8_octets.end(), last.begin(), last.end()) + 3);
    EXPECT_TRUE(run(U2UTF8, ucs4).appended == utf8_octets);
    EXPECT_TRUE(run(UTF82U, utf8_octets).appended == ucs4);
    EXPECT_TRUE(run(BMP2UTF8, ucs2).appended == utf8_of_bmp);
    EXPECT_TRUE(run(UTF82BMP, utf8_of_bmp).appended == ucs2);
}

TEST(codesets, what_is_odd_on_purpose) {
    // clang-format off
    const struct {
        const char* what; conversion convert; const char* in; unsigned char fill; int status; const char* out;
    } cases[] = {
        {"a cut character takes the fill octet", UTF82U, "c3", 0, 0, "00 00 00 40"},
        {"a cut character takes the fill octet", UTF82U, "e3 81", 0x9F, 0, "00 00 30 5f"},
        {"a cut character takes the fill octet", BMP2U, "41", 0x9F, 0, "00 00 41 9f"},
        {"a cut character takes the fill octet", U2BMP, "00 00", 0x41, 0, "41 41"},
        {"values are modulo 2^32", UTF82U, "c0", 0, 0, "ff ff ff 80"},
        {"such a value is no BMP character", UTF82BMP, "41 c0", 0, refused, "00 41"},
        {"what follows a lead octet is not checked", UTF82U, "c3 41 e0 ff c3", 0, 0, "00 00 00 81 00 00 20 03"},
        {"overlong forms, zero at the end too", UTF82IA5, "c1 81 f8 80 80 81 81 e0 80 80", 0, 0, "41 41 00"},
        {"bit 20 is lost", U2UTF8, "00 10 ff ff", 0, 0, "f0 8f bf bf"},
        {"bit 20 is lost", U2UTF8, "00 1f ff ff", 0, 0, "f3 bf bf bf"},
        {"it is read", UTF82U, "f7 bf bf bf", 0, 0, "00 1f ff ff"},
        {"no form, no octets", U2UTF8, "80 00 00 00 ff ff ff ff 00 00 00 41", 0, 0, "41"},
        {"an accent at the end", T612BMP, "41 cc", 0, 0, "00 41"},
        {"beyond Latin-1", T612IA5, "41 e0", 0, refused, ""},
        {"by way of BMP", T612IA5, "c2 65 a8", 0, 0, "e9 a4"}
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const auto [status, appended] = run(c.convert, bytes(c.in), c.fill);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(hex(appended), c.out);
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
        out.insert(out.end(), {static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)});
        accent = 0;
    }
    return out;
}

// What a conversion appends, or nothing when the text is refused.
std::optional<octets> converted(const conversion& convert, const octets& text) {
    const auto [status, appended] = run(convert, text);
    EXPECT_TRUE(status == 0 || (status == refused && appended.empty())) << status << ", " << hex(appended);
    return status == 0 ? std::optional(appended) : std::nullopt;
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
    allocations watch;
    EXPECT_EQ(IA52U(in, out), 0);
    EXPECT_LT(watch.made(), 60u);
    EXPECT_EQ(out.length(), text.size() * 4);
}

// The code point that octets hold has to be permitted and to need as many octets (RFC 3629).
bool decodes(const octets& text) {
    constexpr uint32_t least[] = {0, 0x80, 0x800, 0x10000};
    for (size_t at = 0; at != text.size();) {
        const size_t more = text[at] < 0x80 ? 0 : text[at] < 0xE0 ? 1 : text[at] < 0xF0 ? 2 : 3;
        if ((text[at] >= 0x80 && text[at] < 0xC0) || text[at] >= 0xF8 || text.size() - at <= more) return false;
        uint32_t value = more == 0 ? text[at] : text[at] & (0x3Fu >> more);
        for (size_t i = 1; i <= more; ++i) {
            if (text[at + i] >> 6 != 2) return false;
            value = value << 6 | (text[at + i] & 0x3F);
        }
        if (value < least[more] || value > 0x10FFFF || value >> 11 == 0x1B) return false;
        at += more + 1;
    }
    return true;
}

TEST(utf8, all_first_octets_and_the_limits_of_those_that_follow) {
    const octets limits = bytes("00 41 7f 80 8f 90 9f a0 bf c0 c1 c2 e0 ed ee f0 f4 f5 ff");
    for (unsigned first = 0; first < 256; ++first)
        for (const unsigned char second : limits)
            for (const unsigned char third : limits)
                for (const unsigned char fourth : limits) {
                    octets text{static_cast<unsigned char>(first), second, third, fourth};
                    for (; !text.empty(); text.pop_back())
                        ASSERT_EQ(zr::is_utf8(text.data(), text.size()), decodes(text)) << hex(text);
                }
}

TEST(utf8, one_odd_place_in_a_text) {
    const octets odd[] = {{0}, {0x80}, {0xC3, 0xA9}, {0xF4, 0x8F, 0xBF, 0xBF}, {}};
    for (size_t length = 0; length < 50; ++length)
        for (const octets& part : odd)
            for (size_t at = 0; at + part.size() <= length; ++at) {
                octets text(length, 0x41);
                std::copy(part.begin(), part.end(), text.begin() + static_cast<std::ptrdiff_t>(at));
                const bool zero = part == odd[0];
                ASSERT_EQ(zr::is_ascii(text.data(), length), part.empty() || zero) << hex(text);
                ASSERT_EQ(zr::is_utf8(text.data(), length), decodes(text)) << hex(text);
                ASSERT_EQ(zr::is_text(text.data(), length), decodes(text) && !zero) << hex(text);
            }
}

}  // namespace
}  // namespace zr_test
