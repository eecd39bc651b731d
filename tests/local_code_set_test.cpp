// Text fields, and their conversion between the local code set and UTF-8 with locales that the build has made.
#include <gtest/gtest.h>
#include <iconv.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "asn1/zrasnbase.h"
#include "asn1/zrasnutf8.h"
#include "support/allocations.h"
#include "support/ber.h"
#include "support/out_of_memory.h"
#include "support/thinned.h"
#include "support/thread_locale.h"
#include "support/thrown.h"
#include "zrz/text_conversion.h"
#include "zrz/zrz.h"

namespace zr_test {
namespace {

using zr_test::thread_locale;

constexpr char to_utf8_refused[] =
    "275063211: Text cannot be converted from the local code set to UTF-8 in src/zrz/zrz";
constexpr char to_local_refused[] =
    "275063211: Text cannot be converted from UTF-8 to the local code set in src/zrz/zrz";

// What set_value does with the text: contents in hexadecimal, or what it throws.
std::string set(zrasnUTF8String& object, std::vector<unsigned char> text) {
    text.push_back(0);
    const std::string what = thrown([&] { EXPECT_EQ(object.set_value(text.data()), 0); });
    return what == "nothing" ? contents(object) : what;
}

// What get_value gives, likewise.
std::string get(zrasnUTF8String& object) {
    auto* text = reinterpret_cast<unsigned char*>(&object);
    const std::string what = thrown([&] { EXPECT_EQ(object.get_value(text), 0); });
    EXPECT_EQ(text == nullptr, what != "nothing");
    const std::unique_ptr<unsigned char, void (*)(void*)> owner(text, std::free);
    return text != nullptr ? hex(text, std::strlen(reinterpret_cast<const char*>(text))) : what;
}

// Null: no such text, the other one is refused.
TEST(local_code_set, texts_in_both_directions) {
    // clang-format off
    const struct { const char *what, *locale, *local, *utf8; } cases[] = {
        {"empty", "latin1", "", ""}, {"ASCII", "latin1", "41 5c 7e", "41 5c 7e"},
        {"every kind of letter", "latin1", "41 e9 ff a0", "41 c3 a9 c3 bf c2 a0"},
        {"controls above 7F", "latin1", "80", "c2 80"}, {"the euro does not fit", "latin1", nullptr, "41 e2 82 ac"},
        {"nor does what only resembles a letter", "latin1", nullptr, "c5 93"},
        {"cut UTF-8", "latin1", nullptr, "41 c3"}, {"overlong UTF-8", "latin1", nullptr, "c1 81"},
        {"no UTF-8", "latin1", nullptr, "e9 41"}, {"a surrogate", "latin1", nullptr, "ed a0 80"},
        {"tag characters are not left out", "latin1", nullptr, "41 f3 a0 81 81"},
        {"a letter like a tag's lead octet", "latin1", "f3 41", "c3 b3 41"},
        {"ASCII", "euc_jp", "41 5c 7e", "41 5c 7e"},
        {"kanji and kana", "euc_jp", "c6 fc cb dc 41 8e b1", "e6 97 a5 e6 9c ac 41 ef bd b1"},
        {"three octets a character", "euc_jp", "8f b0 a1", "e4 b8 82"},
        {"cut in the middle", "euc_jp", "41 c6", nullptr}, {"a second octet that is none", "euc_jp", "c6 41", nullptr},
        {"hangul does not fit", "euc_jp", nullptr, "ea b0 80"},
        {"tag characters are not left out", "euc_jp", nullptr, "e6 97 a5 f3 a0 80 81"},
        {"second octets that look like ASCII", "sjis", "83 5c 41", "e3 82 bd 41"},
        {"characters made of two", "jisx0213", "a4 f7", "e3 81 8b e3 82 9a"},
        {"one that could go on, at the end", "jisx0213", "a4 ab", "e3 81 8b"},
        {"a code set with all of Unicode", "gb18030", "c8 d5 94 39 fc 36", "e6 97 a5 f0 9f 98 80"},
        {"tag characters that fit", "gb18030", "c8 d5 a1 a1 d3 36 9c 33", "e6 97 a5 e3 80 80 f3 a0 81 81"},
        {"UTF-8 is not touched", "utf8", "41 c3 a9 ff", "41 c3 a9 ff"}, {"ASCII", nullptr, "41", "41"},
        {"beyond ASCII", nullptr, nullptr, "c3 a9"}, {"beyond ASCII", nullptr, "e9", nullptr}
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.locale != nullptr ? c.locale : "C") + ": " + c.what);
        const thread_locale in_use(c.locale);
        zrasnUTF8String object(zr_local_code_set);
        EXPECT_EQ(set(object, bytes("42")), "42");
        if (c.local != nullptr) {
            EXPECT_EQ(set(object, bytes(c.local)), c.utf8 != nullptr ? c.utf8 : to_utf8_refused);
            EXPECT_EQ(contents(object), c.utf8 != nullptr ? c.utf8 : "42");  // a refused text leaves the value
        }
        if (c.utf8 != nullptr) {
            const auto stored = bytes(c.utf8);
            object.zr_asn_octetstring::set_value(stored.data(), static_cast<unsigned int>(stored.size()));
            EXPECT_EQ(get(object), c.local != nullptr ? c.local : to_local_refused);
            EXPECT_EQ(contents(object), c.utf8);
        }
    }
}

// Every character that a code set has comes back as it was, alone and in a long text.
TEST(local_code_set, every_character_comes_back) {
    for (const char* name : {"latin1", "euc_jp"}) {
        const thread_locale in_use(name);
        std::vector<unsigned char> all;
        for (unsigned char lead = 0xA1; lead <= 0xFE; ++lead)
            for (unsigned char trail = 0xA1; trail <= 0xFE; ++trail) {
                const std::vector<unsigned char> one = {lead, trail};
                zrasnUTF8String object(zr_local_code_set);
                if (set(object, one) == to_utf8_refused) continue;
                EXPECT_EQ(get(object), hex(one));
                all.insert(all.end(), one.begin(), one.end());
            }
        EXPECT_GT(all.size(), 2u * 6000) << name;
        zrasnUTF8String object(zr_local_code_set);
        EXPECT_NE(set(object, all), to_utf8_refused);
        EXPECT_EQ(get(object), hex(all));
    }
}

// What the C library's converter makes of a text; nothing when it refuses it.
std::optional<std::string> by_iconv(iconv_t cd, std::string text) {
    std::string converted(2 * text.size(), '\0');
    char *in = text.data(), *out = converted.data();
    size_t left = text.size(), room = converted.size();
    const bool is_whole = iconv(cd, &in, &left, &out, &room) == 0;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    if (!is_whole) return {};
    converted.resize(converted.size() - room);
    return converted;
}
template <class Converted, class Source>
std::optional<std::string> by_libzrz(const std::string& text) {
    const Source source(text.data(), text.size());
    std::optional<std::string> made;
    const std::string what = thrown([&] {
        const Converted converted(source);
        made.emplace(converted.getChars(), converted.getLength());
    });
    EXPECT_EQ(what.substr(0, 10), made.has_value() ? "nothing" : "275063211:");
    return made;
}

// ISO 8859-1 has no converter of the C library's: every two octets, and some behind them, anywhere in a text.
TEST(local_code_set, latin1_as_iconv_has_it) {
    const thread_locale in_use("latin1");
    const iconv_t to_utf8 = iconv_open("UTF-8", "ISO-8859-1"), to_latin1 = iconv_open("ISO-8859-1", "UTF-8");
    const std::string ascii("abcdefgh\0jklmnopqrs", 19);
    const std::string behind[] = {"", "\x7F", "\x80\x81"};
    size_t converted = 0;
    for (size_t pair = 0; pair < 65536; pair += one_in(7)) {
        for (const std::string& next : behind) {
            std::string text =
                ascii.substr(0, pair % 19) + static_cast<char>(pair >> 8) + static_cast<char>(pair) + next;
            text += ascii.substr(0, pair / 19 % 18);
            const auto local = by_libzrz<ZLCString_5_1, ZUTF8ConstString_5_1>(text);
            // Only the C library leaves tag characters out.
            const bool has_tag =
                text.find("\xF3\xA0\x80\x81") != text.npos || text.find("\xF3\xA0\x81\x81") != text.npos;
            ASSERT_EQ(local, has_tag ? std::nullopt : by_iconv(to_latin1, text)) << hex({text.begin(), text.end()});
            converted += local.has_value();
            ASSERT_EQ((by_libzrz<ZUTF8String_5_1, ZLCConstString_5_1>(text)), by_iconv(to_utf8, text));
        }
    }
    iconv_close(to_utf8);
    iconv_close(to_latin1);
    EXPECT_GT(converted, 2u * 128 * 128 / one_in(7));
}

TEST(local_code_set, the_mode_at_the_time_of_the_call_counts) {
    const thread_locale in_use("latin1");
    zrasnUTF8String object(zr_normal);
    EXPECT_EQ(set(object, bytes("e9")), "e9");
    object.set_secure(zr_local_code_set);
    EXPECT_EQ(set(object, bytes("e9")), "c3 a9");
    EXPECT_EQ(get(object), "e9");
    object.set_secure(zr_normal);
    EXPECT_EQ(get(object), "c3 a9");

    zr_asnbase record(zr_local_code_set);
    record.register_child(&object);
    EXPECT_EQ(get(object), "e9");
}

TEST(local_code_set, the_locale_of_the_calling_thread_counts) {
    const thread_locale in_use("latin1");
    std::thread([] {
        const thread_locale of_this_thread("euc_jp");
        zrasnUTF8String object(zr_local_code_set);
        EXPECT_EQ(set(object, bytes("c6 fc")), "e6 97 a5");
    }).join();
    zrasnUTF8String object(zr_local_code_set);
    EXPECT_EQ(set(object, bytes("c6 fc")), "c3 86 c3 bc");
}

// The n-th allocation fails, for every n: the failure is reported as it should be and nothing is lost.
TEST(local_code_set, memory_runs_out) {
    const thread_locale in_use("euc_jp");
    std::vector<unsigned char> text(4000, 0xC6);  // so long that the block of the result has to grow
    text.push_back(0);
    for (const bool setting : {true, false}) {
        const size_t failures = fail_each_allocation([&](auto&& failing) {
            zrasnUTF8String object(zr_local_code_set);
            if (!setting) object.set_value(text.data());
            unsigned char* out = nullptr;
            int status = 0;
            std::string what;
            const bool failed =
                0 != failing([&] {
                    what = thrown([&] { status = setting ? object.set_value(text.data()) : object.get_value(out); });
                });
            if (what != "nothing") status = what.rfind("memory 275062885: ", 0) == 0 ? zr_err_out_of_memory : -1;
            EXPECT_EQ(status, failed ? zr_err_out_of_memory : 0) << what;
            EXPECT_EQ(out != nullptr, !setting && !failed);
            std::free(out);
        });
        EXPECT_GT(failures, 1u);
    }
}

// A text of 32 letters from two octets to four each fills the first block to the last octet, and a zero octet follows.
TEST(local_code_set, a_text_as_long_as_its_block) {
    const thread_locale in_use("gb18030");
    std::string utf8, local;
    for (int i = 0; i < 32; ++i)
        utf8 += "\xC3\xBF", local += "\x81\x30\x8B\x37";
    allocations watched;
    const ZLCString_5_1 converted(ZUTF8ConstString_5_1(utf8.data(), utf8.size()));
    EXPECT_EQ(watched.made(), 3u);  // the converter, that block, and a longer one
    EXPECT_STREQ(converted.getChars(), local.c_str());
}

// Where the library converts itself the block is as long as the result at least, wherever in eight octets a letter is.
TEST(local_code_set, long_texts_in_latin1_have_room) {
    const thread_locale in_use("latin1");
    for (size_t place = 0; place < 8; ++place) {
        std::string local(8000, 'a');
        for (size_t i = place; i < local.size(); i += 8)
            local[i] = '\xE9';
        allocations watched;
        const ZUTF8String_5_1 converted(ZLCConstString_5_1(local.data(), local.size()));
        EXPECT_EQ(converted.getLength(), 9000u);
        EXPECT_GT(watched.peak(), converted.getLength());
        EXPECT_LT(watched.peak(), converted.getLength() + 512);  // the converter is in it
    }
}

// Memory ends while a block is replaced by a longer one: the next text finds neither, and makes a block of its own.
TEST(local_code_set, goes_on_after_memory_ran_out) {
    std::string longer;
    for (int i = 0; i < 2000; ++i)
        longer += "\xC3\xA9";
    for (const char* name : {"latin1", "euc_jp"}) {
        const thread_locale in_use(name);
        allocations watched;
        {
            zr::text_conversion conversion(zr::text_direction::utf8_to_local);
            const auto convert = [&](const std::string& utf8) {
                const zr::const_text local = conversion.convert(utf8.data(), utf8.size());
                return std::string(local.getChars(), local.getLength());
            };
            const std::string before = convert("\xC3\xA9");
            watched.fail_allocation(1);
            EXPECT_EQ(thrown([&] { convert(longer); }).rfind("memory 275062885: ", 0), 0u);
            watched.fail_allocation(0);
            EXPECT_EQ(convert("\xC3\xA9"), before);
        }
        EXPECT_EQ(watched.live(), 0u);
    }
}

TEST(local_code_set, no_copy_where_nothing_is_converted) {
    const char text[] = "plain";
    const char accented[] = "\xC3\xA9";
    const thread_locale latin1("latin1");
    EXPECT_EQ(ZUTF8String_5_1(ZLCConstString_5_1(text)).getChars(), text);
    EXPECT_EQ(ZLCString_5_1(ZUTF8ConstString_5_1(text, 2)).getLength(), 2u);
    EXPECT_STREQ(ZLCString_5_1(ZUTF8ConstString_5_1(accented)).getChars(), "\xE9");
    const thread_locale utf8("utf8");
    EXPECT_EQ(ZLCString_5_1(ZUTF8ConstString_5_1(accented)).getChars(), accented);
    EXPECT_EQ(ZUTF8String_5_1(ZLCConstString_5_1(nullptr)).getLength(), 0u);
}

TEST(utf8_string, texts) {
    zrasnUTF8String object(zr_normal);
    EXPECT_STREQ(object.get_type_name(), "zrUTF8string");
    EXPECT_EQ(object.get_codeset(), 12u);
    EXPECT_EQ(get(object), "");  // absent
    EXPECT_EQ(set(object, bytes("41 42")), "41 42");
    EXPECT_EQ(written(object), "0c 02 41 42");
    EXPECT_EQ(set(object, bytes("ff c0")), "ff c0");  // not checked
    char empty[] = "";
    for (char* text : {empty, static_cast<char*>(nullptr)}) {
        EXPECT_EQ(object.set_value(text), 0);
        EXPECT_EQ(object.is_present(), 1);
        EXPECT_EQ(written(object), "0c 00");
        EXPECT_EQ(get(object), "");
    }
    // Read in any form; segments are joined.
    for (const char* encoded : {"0c 02 41 42", "2c 06 04 01 41 04 01 42", "2c 80 24 03 04 01 41 04 01 42 00 00"}) {
        EXPECT_EQ(read(object, encoded), 0);
        EXPECT_EQ(get(object), "41 42") << encoded;
    }
    // The empty text as the default: not written, and read when there is none.
    EXPECT_EQ(object.set_default_value(), 0);
    EXPECT_EQ(set(object, {}), "");
    EXPECT_EQ(written(object), "");
    EXPECT_EQ(read(object, ""), 0);
    EXPECT_EQ(object.is_present(), 0);
    EXPECT_EQ(get(object), "");
}

// A secret text in no form is found in a block that is released or moved.
TEST(utf8_string, secret_texts_are_wiped) {
    const secret_search search({"sesame", {"s\0e\0s\0a", 7}});
    char text[] = "open sesame, \xC8open sesame";
    {
        zrasnUTF8String field(zr_secure);
        zr_asn_directoryString string(zr_secure);
        EXPECT_EQ(field.set_value(text), 0);
        EXPECT_EQ(string.set_value_T61(text), 0);
        for (int i = 0; i < 3; ++i) {
            zr_buffer_t out(zr_secure);
            EXPECT_EQ(string.get_value_UTF8(out), 0);
            EXPECT_EQ(string.get_value_IA5(out), 0);
            EXPECT_EQ(i % 2 == 0 ? string.convert2BMP() : string.convert2T61(), 0);
        }
    }
    EXPECT_EQ(search.found(), 0u);
}

}  // namespace
}  // namespace zr_test
