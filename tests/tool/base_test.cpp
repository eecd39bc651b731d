// What all rooms of the program stand on, and what they read: texts, names, the envelope, digits, armour, lines.
#include <gtest/gtest.h>

#include <fstream>

#include <unistd.h>

#include "asn1/status.h"
#include "base/limited_output.h"
#include "input/armour.h"
#include "input/line_reader.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/path.h"
#include "json/base/suggest.h"
#include "json/base/text.h"
#include "json/base/text_output.h"
#include "support/hex.h"
#include "verbs/source_line.h"

namespace zr_test {
namespace {

using namespace std::string_literals;
using namespace zr::tool;

TEST(text, is_fit_for_a_terminal) {
    const struct {
        std::string text;
        size_t utf8;  // octets at the front that are
        const char* printable;
        const char* source;
    } rows[] = {
        {"", 0, "", ""},
        {"a\\b\tc", 5, R"(a\\b\u{9}c)", "a\\b\tc"},
        {"\0\x1B[m\x7F"s, 5, R"(\u{0}\u{1b}[m\u{7f})", R"(\u{0}\u{1b}[m\u{7f})"},
        {"\u00FC\u6F22\U0001F600", 9, "\u00FC\u6F22\U0001F600", "\u00FC\u6F22\U0001F600"},
        {"\u0085\u202E\uFEFF\U000E0001", 12, R"(\u{85}\u{202e}\u{feff}\u{e0001})",
         R"(\u{85}\u{202e}\u{feff}\u{e0001})"},
        {"\u0080\u0800\U00010000", 9, "\\u{80}\u0800\U00010000", "\\u{80}\u0800\U00010000"},
        {"a\xC0\x80", 1, R"(a\xc0\x80)", R"(a\xc0\x80)"},           // longer than needed
        {"\xED\xA0\x80", 0, R"(\xed\xa0\x80)", R"(\xed\xa0\x80)"},  // surrogate
        {"\xF4\x90\x80\x80", 0, R"(\xf4\x90\x80\x80)", R"(\xf4\x90\x80\x80)"},
        {"\xE2\x82", 0, R"(\xe2\x82)", R"(\xe2\x82)"},  // cut off
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf8_size(row.text), row.utf8) << row.printable;
        EXPECT_EQ(printable(row.text), row.printable);
        EXPECT_EQ(printable_source(row.text), row.source);
    }
}

// In whatever pieces lines come, and however long they are.
TEST(limited_output, hands_on_whole_lines) {
    for (const size_t length : {0u, 3u, 99u, 16383u, 40000u}) {
        const std::string line = std::string(length, 'x') + '\n';
        std::string lines;
        for (int i = 0; i < 5; ++i)
            lines += line;
        for (const size_t lines_shown : {0u, 1u, 2u, 4u, 5u, 6u}) {
            for (const size_t over : {size_t{0}, size_t{1}, length}) {  // octets of the line in which it is enough
                const size_t most = lines_shown * line.size() - std::min(over, lines_shown * line.size());
                const size_t shown = (most + line.size() - 1) / line.size();
                for (const size_t piece : {size_t{1}, line.size(), size_t{16384}, lines.size()}) {
                    text_output all;
                    limited_output out(all, most);
                    for (size_t at = 0; at < lines.size(); at += piece)
                        out.write(lines.data() + at, std::min(piece, lines.size() - at));
                    out.flush();
                    const size_t expected = std::min<size_t>(shown, 5);
                    ASSERT_EQ(all.text(), std::string_view(lines).substr(0, expected * line.size()))
                        << length << ", " << most << ", " << piece;
                    ASSERT_EQ(out.left_out(), 5 - expected);
                }
            }
        }
    }
}

TEST(text, in_messages_has_a_bound) {
    EXPECT_EQ(in_quotes(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
    EXPECT_EQ(in_quotes(std::string(41, 'x')), "\"" + std::string(40, 'x') + "...\"");
    EXPECT_EQ(in_quotes(std::string(39, 'x') + "\u00FCx"), "\"" + std::string(39, 'x') + "...\"");
    EXPECT_LT(in_quotes(std::string(1000000, '\x80')).size(), 200u);
    EXPECT_LT(file_label(std::string(1000000, '\x80')).size(), 1100u);
    EXPECT_EQ(file_label(std::string(255, 'f')), std::string(255, 'f'));
    path_builder path;
    for (int i = 0; i < 1000000; ++i) {
        path.member("children");
        path.element(7);
    }
    EXPECT_LT(path.text().size(), 500u);
    EXPECT_EQ(path.text().substr(0, 24), "children[7].children[7].");
    EXPECT_EQ(counted(1, "octet") + ", " + counted(0, "octet"), "1 octet, 0 octets");
}

TEST(suggest, what_is_near_and_nothing_else) {
    // clang-format off
    const struct { const char *word, *meant; } rows[] = {
        {"--compct", "--compact"}, {"--form", "--from"}, {"-O", "-o"}, {"decod", "decode"}, {"chekc", "check"},
        {"--json", ""}, {"-r", ""}, {"-V", ""}, {"-q", ""}, {"x", ""}, {"frobnicate", ""}, {"", ""},
        {"--hexa", "--hex"}, {"DUMP", "dump"}
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(
            nearest(row.word, {"decode", "check", "dump", "--from", "--compact", "--hex", "-h", "-o", "--version"}),
            row.meant)
            << row.word;
}

TEST(envelope, of_what_is_read) {
    const struct {
        const char* octets;
        size_t header;
        bool possible;
        size_t fault;
        const char* message;
    } rows[] = {
        {"04 02 ac dc 30 00", 4, true, 0, ""},
        {"05 02 ac dc 00 30 00", 5, true, 0, ""},  // the first octet says where the record begins
        {"30 02 ac dc 05 00", 0, true, 0, ""},
        {"04 03 ac dc 30 00", 4, false, 1, "found version 3, expected version 2"},
        {"04 02 ac dd 30 00", 0, false, 0, "found 04 02 ac dd, expected the envelope header 04 02 ac dc or a SEQUENCE"},
        {"04 02 ac dc", 0, true, 4, "found the end of the data behind the envelope header, expected a SEQUENCE (30)"},
        {"04 02", 0, true, 2, "found the end of the data in the envelope header, expected 04 02 ac dc"},
        {"04 05", 0, true, 0, "found 04 05, expected the envelope header"},
        {"", 0, true, 0, "found no octets, expected the envelope header"},
    };
    for (const auto& row : rows) {
        const std::vector<unsigned char> data = bytes(row.octets);
        EXPECT_EQ(envelope_header_size(data.data(), data.size()), row.header) << row.octets;
        EXPECT_EQ(may_be_record(data.data(), data.size()), row.possible) << row.octets;
        if (*row.message == 0) continue;
        const envelope_fault fault = explain_envelope(data.data(), data.size());
        EXPECT_EQ(fault.offset, row.fault) << row.octets;
        EXPECT_EQ(fault.message.find(row.message), 0u) << fault.message;
    }
    EXPECT_EQ(decode_octets(**zr::modules().modules[0]->begin(), nullptr, size_t{UINT32_MAX} - 3, nullptr),
              zr_err_out_of_memory);
}

// In pieces of every size: the octets and then what was wrong, with its place.
std::string decoded(input_form form, const std::string& text, size_t piece, size_t room) {
    text_decoder decoder(form);
    std::string all;
    for (size_t begin = 0; begin < text.size(); begin += piece) {
        const char* at = text.data() + begin;
        const char* const end = text.data() + std::min(text.size(), begin + piece);
        while (at != end) {
            unsigned char some[8];
            const size_t count = decoder.decode(at, end, some, room);
            for (size_t i = 0; i != count; ++i)
                all += hex_text(some + i, 1);
            if (decoder.refused()) return all + " " + std::to_string(at - text.data()) + ": " + decoder.problem();
        }
    }
    return decoder.finish() ? all : all + " " + decoder.problem();
}

TEST(text_decoder, octets_and_faults) {
    constexpr input_form hexadecimal = input_form::hex, base64 = input_form::base64;
    const struct {
        input_form form;
        const char* text;
        const char* octets;
    } rows[] = {
        {hexadecimal, "", ""},
        {hexadecimal, "0123456789abcdefABCDEF", "0123456789abcdefabcdef"},
        {hexadecimal, "0x04, 0x02,0XaC:dc\t30\r\n00", "0402acdc3000"},
        {hexadecimal, "0 4 0\n2", "0402"},
        {hexadecimal, "00x1", "00 2: not a hexadecimal digit"},  // 0x stands between octets
        {hexadecimal, "040", "04 an odd number of hexadecimal digits"},
        {hexadecimal, "04g", "04 2: not a hexadecimal digit"},
        {hexadecimal, "04\xFF", "04 2: not a hexadecimal digit"},
        {hexadecimal, "x04", " 0: not a hexadecimal digit"},
        {base64, "BAKs3A==", "0402acdc"},
        {base64, "BAKs3A", "0402acdc"},
        {base64, "+/-_ \n", "fbffbf"},
        {base64, "BA=", "04 base64 padding is not complete"},
        {base64, "BAKsB", "0402ac base64 ends inside an octet"},
        {base64, "B=", " 1: base64 padding where none belongs"},
        {base64, "BA==B", "04 4: a base64 digit behind the padding"},
        {base64, "BA!", "04 2: not a base64 digit"},
    };
    for (const auto& row : rows)
        for (size_t piece : {1, 2, 3, 5, 100})
            for (size_t room : {1, 2, 8})
                EXPECT_EQ(decoded(row.form, row.text, piece, room), row.octets) << row.text << " by " << piece;
}

TEST(armour, lines_of_the_first_block) {
    const struct {
        std::vector<const char*> lines;
        const char* taken;  // and then what was wrong or remarkable
    } rows[] = {
        {{"-----BEGIN A-----", "AA", "BB", "-----END A-----"}, "AABB"},
        {{"text: before", "-----BEGIN A-----", "AA", "-----END A-----", "behind"}, "AA"},
        {{"-----BEGIN A-----", "Key: value", " goes on", "", "AA", "-----END A-----"}, "AA"},
        {{"-----BEGIN A-----", "AA", "Key: value", "-----END A-----"}, "AAKey: value"},
        {{"-----BEGIN A-----", "AA", "-----END B-----"}, "AA; the armour of \"A\" ends as that of \"B\""},
        {{"-----BEGIN A-----", "AA", "-----END A-----", "-----BEGIN A-----", "BB"},
         "AA; another armoured block: not read"},
        {{"-----BEGIN A-----", "AA", "-----BEGIN A-----"}, "AA! a -----BEGIN line inside the armour"},
        {{"-----BEGIN A-----", "AA"}, "AA! the armour has no -----END line"},
    };
    for (const auto& row : rows) {
        armour block;
        std::string taken, all;
        for (const char* line : row.lines) {
            if (block.take(line)) taken += line;
            if (!block.remark().empty()) all += "; " + block.remark();
        }
        if (!block.finish()) all += "! " + block.problem();
        EXPECT_EQ(taken + all, row.taken);
    }
}

TEST(line_reader, gives_lines_of_any_length) {
    const std::string path = testing::TempDir() + "zrasn_lines" + std::to_string(getpid());
    const std::string longest(200000, 'x');  // longer than what is read at once
    const struct {
        std::string text;
        std::string lines;  // "number:line", "number!" when it is too long
    } rows[] = {
        {"", ""},
        {"a\nb", "1:a 2:b "},
        {"\n \t\r\n\na\r\n\n", "4:a "},
        {longest + "\n" + longest, "1:" + longest + " 2:" + longest + " "},
        {longest + "x\nb\n" + longest + "xx", "1! 2:b 3! "},
        {std::string(70000, '\n') + "a", "70001:a "},
    };
    for (const auto& row : rows) {
        std::ofstream(path) << row.text;
        file_output nowhere("/dev/null");
        line_reader lines(path, nowhere, longest.size() + 1);  // the end of the line counts
        std::string all;
        for (std::string_view line; lines.next(line);)
            all += std::to_string(lines.number()) + (lines.too_long() ? "!" : ":" + std::string(line)) + " ";
        EXPECT_EQ(all, row.lines) << row.text.size();
    }
    unlink(path.c_str());
}

TEST(source_line, shows_the_place) {
    const std::string many(100, 'x');
    const struct {
        std::string text;
        size_t offset;
        std::string shown;
    } rows[] = {
        {"", 0, "  \n  ^\n"},
        {"abc\ndef\nghi", 5, "  def\n   ^\n"},
        {"a\r\nb", 1, "  a\n   ^\n"},
        {"ab\r\nb", 1, "  ab\n   ^\n"},
        {"\tx\t\\y", 4, "  \tx\t\\y\n  \t \t ^\n"},
        {"\u6F22\u5B57e\u0301x", 9, "  \u6F22\u5B57e\u0301x\n       ^\n"},
        {"\x1B\xFFx", 2, "  \\u{1b}\\xffx\n            ^\n"},
        {many + "!" + many, 100,
         "  " + many.substr(40) + "!" + many.substr(41) + "\n  " + std::string(60, ' ') + "^\n"},
        {"\u00FC" + many.substr(41) + "!", 61, "  \u00FC" + many.substr(41) + "!\n  " + std::string(60, ' ') + "^\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(show_place(row.text, row.offset), row.shown) << row.text;
    EXPECT_LT(show_place(std::string(5000000, '\x80'), 70).size(), 1000u);
}

}  // namespace
}  // namespace zr_test
