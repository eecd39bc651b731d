// Character string objects: what each class accepts, every code set against every other, and the choice of a code set.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "asn1/asnstrng.h"
#include "asn1/zrasnbase.h"
#include "support/ber.h"

namespace zr_test {
namespace {

constexpr int absent = 275063200;
constexpr int not_representable = 275063211;
constexpr int not_accepted = 275063212;

constexpr unsigned int code_sets[] = {12, 19, 20, 22, 26, 28, 30};

// A directory string whose text and preference the tests can see and set.
class directory_string : public zr_asn_directoryString {
public:
    explicit directory_string(int preferred = 0) : zr_asn_directoryString(zr_normal) { preferred_codeset_ = preferred; }
    using zr_asn_charstring::preferred_codeset_;
    std::string text() const { return hex(second_); }
    void hold(unsigned int code_set, std::string_view octets) {
        input cursor(octets);
        set_value_uninterpreted(cursor);
        set_codeset(code_set);
    }
};

struct getter {
    unsigned int code_set;
    int (zr_asn_charstring::*get)(zr_buffer_t&) const;
    int (zr_asn_charstring::*convert)(zr_buffer_t&) const;
    int (zr_asn_charstring::*in_place)();
    int (zr_asn_charstring::*set)(zr_r_buffer_t&);
};

using string = zr_asn_charstring;
const getter operations[] = {
    {12, &string::get_value_UTF8, &string::convert2UTF8, &string::convert2UTF8, &string::set_value_UTF8},
    {19, &string::get_value_printable, &string::convert2printable, &string::convert2printable,
     &string::set_value_printable},
    {20, &string::get_value_T61, &string::convert2T61, &string::convert2T61, &string::set_value_T61},
    {22, &string::get_value_IA5, &string::convert2IA5, &string::convert2IA5, nullptr},
    {26, &string::get_value_visible, &string::convert2visible, &string::convert2visible, &string::set_value_visible},
    {28, &string::get_value_Univ, &string::convert2Univ, &string::convert2Univ, &string::set_value_Univ},
    {30, &string::get_value_BMP, &string::convert2BMP, &string::convert2BMP, &string::set_value_BMP},
};

int set(zr_asn_charstring& object, const getter& operation, std::string_view octets) {
    input cursor(octets);
    return operation.set != nullptr ? (object.*operation.set)(cursor) : object.set_value_IA5(cursor, 0);
}

// Some texts as each code set has them, in the order of `code_sets`; null where it has not.
struct text_forms {
    const char* what;
    const char* octets[7];
};
constexpr text_forms texts[] = {
    {"printable", {"41 62", "41 62", "41 62", "41 62", "41 62", "00 00 00 41 00 00 00 62", "00 41 00 62"}},
    {"7 bits", {"61 3d", nullptr, "61 3d", "61 3d", nullptr, "00 00 00 61 00 00 00 3d", "00 61 00 3d"}},
    {"Latin-1", {"c3 a9 24", nullptr, "c2 65 a4", "e9 24", nullptr, "00 00 00 e9 00 00 00 24", "00 e9 00 24"}},
    {"two scripts", {"ce a9 41", nullptr, "e0 41", nullptr, nullptr, "00 00 03 a9 00 00 00 41", "03 a9 00 41"}},
    {"beyond the BMP", {"f0 9f 98 80", nullptr, nullptr, nullptr, nullptr, "00 01 f6 00", nullptr}},
    {"empty", {"", "", "", "", "", "", ""}},
};

// What converts, in the order of `code_sets`: as far as the text has a form there (.), if it has one as IA5 too, by way
// of which it goes (i), and nothing at all (-).
constexpr char conversions[][8] = {
    "..i....",  // from UTF-8
    "..i.-..",  // printable
    ".......",  // T.61
    "..i....",  // IA5
    "----.--",  // visible
    "..i....",  // universal
    "..i....",  // BMP
};

TEST(charstring, every_code_set_into_every_other) {
    for (const text_forms& text : texts) {
        for (size_t from = 0; from < 7; ++from) {
            for (size_t to = 0; to < 7 && text.octets[from] != nullptr; ++to) {
                SCOPED_TRACE(testing::Message() << text.what << " from " << code_sets[from] << " to " << code_sets[to]);
                const char way = conversions[from][to];
                const bool none = way == '-' || (way == 'i' && text.octets[3] == nullptr);
                const char* expected = none ? nullptr : text.octets[to];
                directory_string object;
                object.hold(code_sets[from], text.octets[from]);
                for (const auto read : {operations[to].get, operations[to].convert}) {
                    zr_buffer_t out(zr_normal);
                    out.append("x");
                    EXPECT_EQ((object.*read)(out), expected != nullptr ? 0 : not_representable);
                    if (expected == nullptr) continue;
                    EXPECT_EQ(hex(out), *expected != 0 ? "78 " + std::string(expected) : "78");
                }
                EXPECT_EQ(object.text(), text.octets[from]);
                EXPECT_EQ(object.get_codeset(), code_sets[from]);
            }
        }
    }
}

TEST(charstring, conversions_in_place) {
    // clang-format off
    const struct { unsigned int from; const char* text; unsigned int to; bool done; unsigned int named; const char* left; }
    rows[] = {
        {12, "41 62", 19, true, 19, "41 62"}, {12, "c3 a9", 22, true, 22, "e9"}, {12, "c3 a9", 20, true, 20, "c2 65"},
        {12, "c3 a9", 30, true, 30, "00 e9"}, {30, "00 e9", 28, true, 28, "00 00 00 e9"}, {19, "41", 22, true, 22, "41"},
        {28, "00 00 00 e9", 30, true, 30, "00 e9"}, {20, "c2 65", 22, true, 22, "e9"},
        // A code set into itself.
        {12, "c3 a9", 12, true, 12, "c3 a9"}, {26, "41", 26, true, 26, "41"},
        // No form there.
        {22, "e9", 19, false, 22, "e9"}, {22, "3d", 26, false, 22, "3d"}, {30, "20 ac", 20, false, 30, "20 ac"},
        {12, "f0 9f 98 80", 30, false, 12, "f0 9f 98 80"},
        // What is made visible is named printable, what is made UTF-8 is named universal.
        {12, "41 62", 26, true, 19, "41 62"}, {30, "00 41", 26, true, 19, "41"}, {22, "e9", 12, true, 28, "c3 a9"},
        // UTF-8 octets are read as BMP units.
        {12, "c3 a9 41", 28, true, 28, "00 00 c3 a9 00 00 41 00"},
        // Visible texts become IA5 and nothing else, printable ones never visible.
        {26, "41", 22, true, 22, "41"}, {26, "41", 19, false, 26, "41"}, {26, "", 12, false, 26, ""},
        {19, "41", 26, false, 19, "41"},
        // Empty UTF-8 and IA5 texts are not made printable or visible.
        {12, "", 19, true, 12, ""}, {12, "", 26, true, 12, ""}, {22, "", 19, true, 22, ""}, {22, "", 26, true, 22, ""},
        {30, "", 19, true, 19, ""}, {20, "", 26, true, 19, ""}, {12, "", 28, true, 28, ""}, {22, "", 12, true, 28, ""}
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.text << " from " << row.from << " to " << row.to);
        directory_string object;
        object.hold(row.from, row.text);
        const auto to = std::find(std::begin(code_sets), std::end(code_sets), row.to) - std::begin(code_sets);
        EXPECT_EQ((object.*operations[to].in_place)(), row.done ? 0 : not_representable);
        EXPECT_EQ(object.text(), row.left);
        EXPECT_EQ(object.get_codeset(), row.named);
        EXPECT_EQ(object.get_tag(), row.named);
        EXPECT_EQ(object.is_present(), 1);
    }
}

using maker = std::unique_ptr<zr_asn_charstring> (*)();
template <class T>
std::unique_ptr<zr_asn_charstring> make() {
    return std::make_unique<T>(zr_normal);
}

TEST(charstring, every_class_against_every_code_set) {
    using list = std::vector<unsigned int>;
    // clang-format off
    const struct { const char* type_name; maker make; unsigned int code_set; list accepted, preferred, read; } classes[] = {
        {"IA5string", make<zr_asn_ia5String>, 22, {22}, {22}, {22}},
        {"PRINTABLEstring", make<zr_asn_printableString>, 19, {19}, {19}, {19}},
        {"VISIBLEstring", make<zr_asn_visibleString>, 26, {26}, {26}, {26}},
        {"TELETEXstring", make<zr_asn_teletexString>, 20, {20}, {20}, {20}},
        {"BMPstring", make<zr_asn_bmpString>, 30, {30}, {30}, {30}},
        {"UNIVERSALstring", make<zr_asn_universalString>, 28, {28}, {28}, {28}},
        {"UTF8string", make<zr_asn_UTF8String>, 12, {12}, {12}, {12}},
        {"CHARstring", make<zr_asn_charstring>, 0, {}, {}, {4}},
        {"DIRECTORYstring", make<zr_asn_directoryString>, 19, {12, 19, 20, 22, 26, 28, 30}, {12, 19, 20, 28},
         {12, 19, 20, 22, 28, 30}}
    };
    // clang-format on
    for (const auto& c : classes) {
        SCOPED_TRACE(c.type_name);
        const auto in = [](const list& some, unsigned int code_set) {
            return static_cast<int>(std::count(some.begin(), some.end(), code_set));
        };
        auto fresh = c.make();
        EXPECT_STREQ(fresh->get_type_name(), c.type_name);
        EXPECT_EQ(fresh->get_codeset(), c.code_set);
        EXPECT_EQ(fresh->get_class(), 0);
        EXPECT_EQ(fresh->is_polymorphic(), c.accepted.size() == 1 ? 0 : 1);
        EXPECT_TRUE(c.code_set == 0 || fresh->get_tag() == c.code_set);
        for (unsigned int code_set = 0; code_set < 40; ++code_set) {
            const bool accepts = in(c.accepted, code_set) != 0;
            EXPECT_EQ(fresh->check_accepted_codeset(code_set), accepts ? 1 : 0) << code_set;
            EXPECT_EQ(fresh->check_preferred_codeset(code_set), in(c.preferred, code_set)) << code_set;
            EXPECT_EQ(fresh->check_type(code_set, 0), in(c.read, code_set)) << code_set;
            EXPECT_EQ(fresh->check_type(code_set, 2), 0);
            for (const bool by_tag : {true, false}) {
                auto object = c.make();
                EXPECT_EQ(by_tag ? object->set_tag(code_set) : object->set_codeset(code_set),
                          accepts ? 0 : not_accepted);
                EXPECT_EQ(object->get_codeset(), accepts ? code_set : c.code_set);
                EXPECT_TRUE(!accepts || object->get_tag() == code_set);
            }
        }
        for (const getter& operation : operations) {
            auto object = c.make();
            const bool accepts = in(c.accepted, operation.code_set) != 0;
            EXPECT_EQ((*object.*operation.in_place)(), absent);
            zr_buffer_t out(zr_normal);
            EXPECT_EQ((*object.*operation.get)(out), absent);
            EXPECT_EQ(set(*object, operation, "ff 01"), accepts ? 0 : not_accepted) << operation.code_set;
            EXPECT_EQ(object->is_present(), accepts ? 1 : 0);
            EXPECT_EQ(object->get_codeset(), accepts ? operation.code_set : c.code_set);
            object->set_value_uninterpreted("A", 1);
            if (accepts) continue;
            EXPECT_EQ((*object.*operation.in_place)(), not_accepted) << operation.code_set;
        }
    }
}

struct no_single_octets : zr_asn_charstring {
    using zr_asn_charstring::zr_asn_charstring;
    int check_accepted_codeset(unsigned int code_set) const override { return code_set != 22 ? 1 : 0; }
    int check_preferred_codeset(unsigned int) const override { return 0; }
};

// The choice of a code set for a plain text. set_value_C and set_value_IA5 differ in their orders and their failures.
TEST(charstring, choice_of_a_code_set) {
    // clang-format off
    const struct {
        const char* what; maker make; const char* text; int status_c, status_ia5; unsigned int code_set;
    } cases[] = {
        {"printable first", make<zr_asn_directoryString>, "Hello", 0, 0, 19},
        {"no equals sign there", make<zr_asn_directoryString>, "a=b", 0, 0, 20},
        {"a control octet that T.61 has not", make<zr_asn_directoryString>, "a\001", 0, 0, 12},
        {"its only code set", make<zr_asn_bmpString>, "a\001", 0, 0, 30},
        {"its only code set", make<zr_asn_ia5String>, "a=b", 0, 0, 22},
        {"not printable", make<zr_asn_printableString>, "a=b", not_representable, not_accepted, 19},
        {"not visible", make<zr_asn_visibleString>, "a=b", not_representable, not_accepted, 26},
        {"visible", make<zr_asn_visibleString>, "ab", 0, 0, 26},
        {"nothing accepted", make<zr_asn_charstring>, "ab", not_representable, not_accepted, 0},
        {"accepted, though not preferred", make<no_single_octets>, "ab", 0, 0, 19},
    };
    // clang-format on
    for (const auto& c : cases) {
        for (const bool ia5 : {false, true}) {
            SCOPED_TRACE(std::string(c.what) + (ia5 ? ", IA5" : ", C"));
            std::string text = c.text;
            auto object = c.make();
            const int status = ia5 ? object->set_value_IA5(text.data(), 1) : object->set_value_C(text.data());
            EXPECT_EQ(status, ia5 ? c.status_ia5 : c.status_c);
            EXPECT_EQ(object->get_codeset(), c.code_set);
            EXPECT_EQ(object->is_present(), status == 0 ? 1 : 0);
        }
    }

    // Where T.61 fails and none is preferred, BMP comes before UTF-8 for C strings and behind it for IA5.
    std::string control = "\001";
    no_single_octets object(zr_normal);
    EXPECT_EQ(object.set_value_C(control.data()), 0);
    EXPECT_EQ(object.get_codeset(), 30u);
    EXPECT_EQ(object.set_value_IA5(control.data(), 1), 0);
    EXPECT_EQ(object.get_codeset(), 12u);
    zr_asn_ia5String ia5(zr_normal);
    std::string latin1 = "\xE9";
    EXPECT_EQ(ia5.set_value_C(latin1.data()), not_representable);
    EXPECT_EQ(ia5.is_present(), 0);
    EXPECT_EQ(ia5.set_value_IA5(latin1.data(), 0), 0);
    EXPECT_EQ(zr_asn_printableString(zr_normal).set_value_IA5(latin1.data(), 0), not_accepted);
}

void expect_stored(const directory_string& object, int status, unsigned int code_set, const std::string& octets) {
    EXPECT_EQ(status, 0);
    EXPECT_EQ(object.get_codeset(), code_set);
    EXPECT_EQ(object.text(), octets);
}

TEST(charstring, preferred_code_set_of_plain_texts) {
    // clang-format off
    const struct { int preferred; const char* text; unsigned int named_c, named_ia5; const char* octets; } cases[] = {
        {12, "a=", 12, 12, "61 3d"}, {19, "ab", 19, 19, "61 62"}, {20, "a#", 20, 20, "61 a6"},
        {20, "\001", 12, 12, "01"}, {22, "ab", 22, 22, "61 62"}, {28, "a", 28, 28, "00 00 00 61"},
        {30, "a", 30, 30, "00 61"}, {17, "a=", 20, 20, "61 3d"},  // 17 is no code set
        {19, "a=", 20, 19, "61 3d"}, {26, "a=", 20, 19, "61 3d"}, {26, "ab", 26, 19, "61 62"}  // IA5: unchecked
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.preferred) + " for " + c.text);
        std::string text = c.text;
        directory_string object(c.preferred);
        expect_stored(object, object.set_value_C(text.data()), c.named_c, c.octets);
        expect_stored(object, object.set_value_IA5(text.data(), 1), c.named_ia5, c.octets);
    }
}

TEST(charstring, set_preferred_codeset_and_normalize) {
    // clang-format off
    const struct {
        const char* what; unsigned int code_set; const char* text; unsigned int asked;
        int status, recorded; unsigned int named; const char* octets; unsigned int normalized;
    } cases[] = {
        {"printable texts stay so, nothing is recorded", 30, "00 41", 30, 0, 0, 19, "41", 19},
        {"to BMP", 22, "3d", 30, 0, 30, 30, "00 3d", 30},
        {"to UTF-8, named universal; normalize names it again", 30, "00 e9", 12, 0, 12, 28, "c3 a9", 28},
        {"to T.61", 30, "00 e9", 20, 0, 20, 20, "c2 65", 20},
        {"T.61 has no such character", 30, "20 ac", 20, not_representable, 0, 30, "20 ac", 28},
        {"code sets that cannot be preferred", 30, "00 e9", 19, -1, 0, 30, "00 e9", 20},
        {"code sets that cannot be preferred", 30, "00 e9", 22, -1, 0, 30, "00 e9", 20},
        {"code sets that cannot be preferred", 30, "00 e9", 26, -1, 0, 30, "00 e9", 20},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        directory_string object;
        object.hold(c.code_set, c.text);
        EXPECT_EQ(object.set_preferred_codeset(c.asked), c.status);
        EXPECT_EQ(object.preferred_codeset_, c.recorded);
        EXPECT_EQ(object.get_codeset(), c.named);
        EXPECT_EQ(object.text(), c.octets);
        EXPECT_EQ(object.normalize(), 0);
        EXPECT_EQ(object.get_codeset(), c.normalized);
    }
    directory_string object;
    EXPECT_EQ(object.normalize(), absent);
    EXPECT_EQ(object.set_preferred_codeset(12), absent);
    EXPECT_EQ(object.preferred_codeset_, 0);
    // A visible text goes nowhere but to IA5, which no directory string prefers.
    object.hold(26, "41");
    EXPECT_EQ(object.normalize(), not_representable);
    EXPECT_EQ(object.get_codeset(), 26u);
}

TEST(charstring, get_value_C) {
    directory_string object;
    object.hold(30, "00 41 00 e9");
    zr_buffer_t out(zr_normal);
    out.append("\xFFx");
    EXPECT_EQ(object.get_value_C(out, '?'), 0);
    EXPECT_EQ(hex(out), "3f 78 41 3f");
    EXPECT_EQ(object.get_value_C(out, 0), not_representable);
    EXPECT_EQ(out.length(), 0u);
    object.hold(30, "20 ac");
    EXPECT_EQ(object.get_value_C(out, '?'), not_representable);
    out.clear();
    object.hold(30, "00 41 00 00");
    EXPECT_EQ(object.get_value_C(out, 0), 0);
    EXPECT_EQ(hex(out), "41 00");
    object.hold(30, "00 e9 00 00");
    out.clear();
    EXPECT_EQ(object.get_value_C(out, '?'), 0);
    EXPECT_EQ(hex(out), "3f 00");
}

TEST(charstring, array_forms_and_null) {
    directory_string object;
    char text[] = "a=";
    unsigned short units[] = {0x4142, 0x0043, 0};
    unsigned int characters[] = {0x41, 0};
    expect_stored(object, object.set_value_printable(text), 19, "61 3d");
    expect_stored(object, object.set_value_visible(text), 26, "61 3d");
    expect_stored(object, object.set_value_T61(text), 20, "61 3d");
    expect_stored(object, object.set_value_UTF8(text), 12, "61 3d");
    expect_stored(object, object.set_value_BMP(units), 30, hex(units, 4));
    expect_stored(object, object.set_value_Univ(characters), 28, "");
    char* const none = nullptr;
    expect_stored(object, object.set_value_printable(none), 19, "");
    expect_stored(object, object.set_value_C(none), 19, "");
    expect_stored(object, object.set_value_IA5(none, 1), 19, "");
    expect_stored(object, object.set_value_BMP(static_cast<unsigned short*>(nullptr)), 30, "");
    expect_stored(object, object.set_value_uninterpreted(nullptr, 5), 30, "");
    EXPECT_EQ(object.is_present(), 1);
}

TEST(charstring, text_and_contents_are_apart) {
    zr_asn_printableString object(zr_normal);
    char text[] = "abc";
    EXPECT_EQ(object.set_value_printable(text), 0);
    EXPECT_EQ(written(object), "13 00");
    const auto contents = bytes("78 79");
    EXPECT_EQ(object.set_value(contents.data(), 2), 0);
    EXPECT_EQ(written(object), "13 02 78 79");
    zr_buffer_t out(zr_normal);
    EXPECT_EQ(object.get_value_printable(out), 0);
    EXPECT_EQ(hex(out), "61 62 63");

    // What is read names its code set; the contents come from the octet string, its segments included.
    for (const unsigned int tag : code_sets) {
        zr_asn_directoryString read(zr_normal);
        const std::string identifier = hex({static_cast<unsigned char>(0x20 | tag)});
        EXPECT_EQ(zr_test::read(read, identifier + "07 04 01 41 04 02 42 43"), tag != 26 ? 0 : 275063204) << tag;
        EXPECT_EQ(read.get_codeset(), tag != 26 ? tag : 19);
        EXPECT_EQ(zr_test::contents(read), tag != 26 ? "41 42 43" : std::to_string(absent));
    }
}

// A class of the application's that prefers no code set takes the first that holds the text.
TEST(charstring, normalizes_without_a_preference) {
    struct without_preference : directory_string {
        int check_preferred_codeset(unsigned int) const override { return 0; }
    };
    const struct {
        const char* text;
        unsigned int code_set;
    } rows[] = {{"00 61 00 62", 19}, {"00 61 00 3d", 20}, {"00 61 30 42", 28}};  // UTF-8, named so
    for (const auto& row : rows) {
        without_preference object;
        object.hold(30, row.text);
        EXPECT_EQ(object.normalize(), 0);
        EXPECT_EQ(object.get_codeset(), row.code_set) << row.text;
    }
}

TEST(charstring, absent_strings_read_as_their_default) {
    directory_string object;
    auto* standard = new zr_asn_bmpString(zr_normal);
    input text("00 e9");
    standard->set_value_BMP(text);
    object.set_default_value(standard);
    zr_buffer_t out(zr_normal);
    EXPECT_EQ(object.get_value_UTF8(out), 0);
    EXPECT_EQ(hex(out), "c3 a9");
    EXPECT_EQ(object.convert2printable(), not_representable);
    EXPECT_EQ(object.convert2IA5(), 0);
    EXPECT_EQ(object.text(), "e9");
    EXPECT_EQ(object.get_codeset(), 22u);
    EXPECT_EQ(object.normalize(), 0);

    directory_string of_no_code_set;
    of_no_code_set.set_default_value(new zr_asn_charstring(zr_normal));
    EXPECT_EQ(of_no_code_set.normalize(), not_representable);

    object.set_default_value(new zr_asn_null(zr_normal));
    out.clear();
    EXPECT_EQ(object.get_value_UTF8(out), 0);
    EXPECT_EQ(out.length(), 0u);
}

}  // namespace
}  // namespace zr_test
