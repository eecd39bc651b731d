// Records with texts in the local code set: the entry points answer as the object tree does, octets, structures,
// statuses and the line on standard error, in locales of every sort.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "base_idls/azn_remote_authn_asn.h"
#include "base_idls/principal_asn.h"
#include "support/allocations.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/out_of_memory.h"
#include "support/routes.h"
#include "support/thread_locale.h"

namespace zr_test {
namespace {

// Texts that a locale holds, in its own octets, and texts in UTF-8 of which it holds some.
struct local_texts {
    const char* locale;  // null: "C"
    std::vector<std::string> local, utf8;
};
const std::vector<std::string> some_utf8 = {"",
                                            "plain",
                                            "caf\xC3\xA9",
                                            "\xE6\x97\xA5\xE6\x9C\xAC",
                                            "cut\xC3",
                                            "\xED\xA0\x80",
                                            "\xF3\xA0\x81\x81",
                                            "\xEA\xB0\x80",
                                            "a longer text without anything else in it"};
const local_texts locales[] = {
    {"latin1", {"", "plain", "caf\xE9", "\xA0\xFF", std::string(300, '\xE9')}, some_utf8},
    {"euc_jp", {"", "plain", "\xC6\xFC\xCB\xDC", "\x8E\xB1", "\x8F\xB0\xA1", "cut\xC6"}, some_utf8},
    {"utf8", some_utf8, some_utf8},
    {nullptr, {"", "plain", "caf\xE9"}, some_utf8},
};

// What a call prints, without the number of the line.
std::string message_of(caught_stderr& printed) {
    const std::string line = printed.take();
    return line.substr(0, line.find(" at line "));
}

// Gives the texts of a structure new ones, `odd` of ten of them at most from all there are.
void replace_texts(structure& filled, const std::vector<std::string>& texts, unsigned odd, std::mt19937& random) {
    for (char** text : texts_of(filled.type(), filled.get())) {
        if (*text == nullptr && random() % 2 == 0) continue;
        std::free(*text);
        *text = copy_text(texts[random() % 10 < odd ? random() % texts.size() : random() % 3]);
    }
}

// Zero octets in texts, which no C string shows.
void put_zeros(octets& ber, std::mt19937& random) {
    for (size_t i = 2; i + 2 < ber.size(); ++i)
        if (ber[i - 2] == 0x0C && ber[i - 1] > 1 && ber[i - 1] < 0x20 && random() % 8 == 0) ber[i] = 0;
}

TEST(local_records, entry_points_and_object_tree_encode_alike) {
    std::mt19937 random(31);
    size_t encoded_with_texts = 0, refused = 0;
    for (const local_texts& local : locales) {
        const thread_locale in_use(local.locale);
        for (const zr::record_type* type : all_records()) {
            for (unsigned i = 0; i < 30; ++i) {
                structure original(*type);
                fill(*type, original.get(), random, {400, 5, true});
                replace_texts(original, local.local, i % 5, random);
                caught_stderr printed;
                const encoded tree = encode(local_object_tree, original);
                const std::string message = message_of(printed);
                allocations watched;
                {
                    const encoded direct = encode(local_entry_points, original);
                    ASSERT_EQ(direct.status, tree.status) << type->name;
                    ASSERT_EQ(hex(direct.ber), hex(tree.ber)) << type->name;
                }
                ASSERT_EQ(watched.live(), 0u);
                ASSERT_EQ(message_of(printed), message) << type->name;
                ++(tree.status == 0 ? encoded_with_texts : refused);
            }
        }
    }
    EXPECT_GT(encoded_with_texts, 3000u);
    EXPECT_GT(refused, 200u);
}

TEST(local_records, entry_points_and_object_tree_decode_alike) {
    std::mt19937 random(32);
    size_t decoded = 0, refused = 0;
    for (const local_texts& local : locales) {
        const thread_locale in_use(local.locale);
        for (const zr::record_type* type : all_records()) {
            for (unsigned i = 0; i < 40; ++i) {
                structure original(*type);
                fill(*type, original.get(), random, {400, 5, true});
                replace_texts(original, local.utf8, i % 4, random);
                octets ber = encode(entry_points, original).ber;
                if (i % 3 == 0) ber = rewrite_ber(parse_ber(ber), random, {i % 2 != 0, i % 4 < 2, true, i % 5 == 0});
                put_zeros(ber, random);
                if (i % 7 == 0 && !ber.empty()) ber[random() % ber.size()] = static_cast<unsigned char>(random());
                structure from_tree(*type), from_octets(*type);
                caught_stderr printed;
                const int expected = decode(local_object_tree, ber, from_tree);
                const std::string message = message_of(printed);
                allocations watched;
                const int status = decode(local_entry_points, ber, from_octets);
                ASSERT_EQ(status, expected) << type->name << ": " << hex(ber);
                ASSERT_EQ(message_of(printed), message);
                ASSERT_EQ(difference(*type, from_octets.get(), from_tree.get()), "") << type->name << ": " << hex(ber);
                ASSERT_EQ(leftover_of_free(from_octets), "");
                ASSERT_EQ(watched.live(), 0u);
                ++(status == 0 ? decoded : refused);
            }
        }
    }
    EXPECT_GT(decoded, 3000u);
    EXPECT_GT(refused, 1000u);
}

// The first fault in the order of the fields decides: a text before the list, or the list that has too many elements,
// whose own texts are not looked at.
TEST(local_records, the_first_fault_decides) {
    const thread_locale in_use("latin1");
    const std::string good = "ok", bad = "\xEA\xB0\x80";
    const auto text = [](const std::string& chars) { return element(0x0C, octets(chars.begin(), chars.end())); };
    const auto id = [&](const std::string& name) {
        octets uuid;
        for (int member = 0; member < 5; ++member)
            uuid = uuid + element(0x02, {1});
        return element(0x30, element(0x30, uuid + element(0x04, octets(6))) + text(name));
    };
    const auto ids = [&](uint32_t count, const std::string& name) {
        octets all;
        for (uint32_t i = 0; i < count; ++i)
            all = std::move(all) + id(i == 0 ? name : good);
        return element(0x30, all);
    };
    const struct {
        const char* what;
        std::string principal, first_id;
        uint32_t count;
        int status;
    } cases[] = {
        {"nothing", good, good, 65535, 0},
        {"a text in the list", good, bad, 65535, zr_err_conversion},
        {"too many elements", good, good, 65536, zr_err_out_of_memory},
        {"too many elements, and texts in them", good, bad, 65536, zr_err_out_of_memory},
        {"a text before too many elements", bad, bad, 65536, zr_err_conversion},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        structure out(zr::record<sec_id_pa_t>::type);
        caught_stderr printed;
        EXPECT_EQ(decode(local_entry_points, element(0x30, id(c.principal) + ids(c.count, c.first_id)), out), c.status);
        EXPECT_EQ(printed.take().empty(), c.status == 0);
    }
}

// A text that gets longer when it is read: as the library writes it, in segments, and in a form that only the general
// reader knows.
TEST(local_records, texts_that_grow) {
    const thread_locale in_use("gb18030");
    octets text;
    for (int i = 0; i < 20; ++i)
        text = text + octets{0xC3, 0xBF};
    const octets segment = element(0x04, text);
    for (const octets& name : {element(0x0C, text), element(0x2C, segment), element(0x2C, element(0x24, segment))}) {
        for (const route& way : {local_entry_points, local_object_tree}) {
            structure out(*zr::find_record("yvaction_group_s_t"));
            ASSERT_EQ(decode(way, element(0x30, name + octets{0x30, 0, 0x30, 2, 0x30, 0}), out), 0);
            std::string expected;
            for (int i = 0; i < 20; ++i)
                expected += "\x81\x30\x8B\x37";
            EXPECT_EQ(*texts_of(out.type(), out.get())[0], expected) << way.name;
        }
    }
}

// Texts that are twice as long when they are written: on the stack, in a block that was guessed, in one that was
// counted, each too short at first.
TEST(local_records, texts_that_outgrow_their_block) {
    const thread_locale in_use("latin1");
    for (const size_t length : {1000u, 5000u, 7000u, 9000u, 30000u, 50000u, 60000u, 70000u, 1000000u}) {
        structure original(*zr::find_record("yvaction_group_s_t"));
        std::mt19937 random(35);
        fill(original.type(), original.get(), random, {40, 3, true});
        for (char** text : texts_of(original.type(), original.get())) {
            std::free(*text);
            *text = copy_text(std::string(length, '\xE9'));
        }
        const encoded direct = encode(local_entry_points, original);
        EXPECT_EQ(direct.status, 0);
        EXPECT_TRUE(direct.ber == encode(local_object_tree, original).ber) << length;
    }
}

// Texts of every record that grow together: each alone would fit into what its block has to spare, all do not.
TEST(local_records, texts_that_outgrow_their_block_together) {
    const thread_locale in_use("latin1");
    std::mt19937 random(36);
    size_t several = 0;
    for (const zr::record_type* type : all_records()) {
        if (class_of(*type) != nullptr) continue;
        structure original(*type);
        fill(*type, original.get(), random, {40, 3, true});
        const std::vector<char**> texts = texts_of(*type, original.get());
        if (texts.size() > 1) ++several;
        for (const size_t all : {3000u, 4500u, 6000u, 7000u, 7800u, 20000u, 70000u}) {
            for (char** text : texts) {
                std::free(*text);
                *text = copy_text(std::string(all / texts.size(), '\xE9'));
            }
            allocations watched;
            {
                const encoded direct = encode(local_entry_points, original);
                EXPECT_EQ(direct.status, 0) << type->name;
                EXPECT_TRUE(direct.ber == encode(local_object_tree, original).ber) << type->name << " " << all;
            }
            EXPECT_EQ(watched.live(), 0u);
        }
    }
    EXPECT_GT(several, 30u);
}

// Short texts, in each record the same ones. An encoding of secrets, which is counted first, is written once where no
// text gets longer: in one block, which is wiped, and copied to the one that is handed out.
TEST(local_records, short_texts_and_secrets) {
    const thread_locale in_use("latin1");
    size_t compared = 0;
    for (const zr::record_type* type : all_records()) {
        structure original(*type);
        std::mt19937 random(37);
        fill(*type, original.get(), random, {100, 3, true});
        for (const char* text : {"", "p", "password", "p\xE9"}) {
            for (char** at : texts_of(*type, original.get())) {
                std::free(*at);
                *at = copy_text(text);
            }
            const encoded direct = encode(local_entry_points, original);
            ASSERT_EQ(direct.status, 0) << type->name;
            EXPECT_EQ(hex(direct.ber), hex(encode(local_object_tree, original).ber)) << type->name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 200u);

    azn_util_password_in_s_t request{};
    char user[] = "user", password[] = "password";
    request.str_a = user;
    request.str_b = password;
    zr_asn_buffer_t out{};
    allocations watched;
    ASSERT_EQ(zr::record<azn_util_password_in_s_t>::type.encode_lcs(out, &request), 0);
    const size_t made = watched.made();
    zr_asn_buffer_free(out);
    EXPECT_EQ(made, 2u);
}

// What is no envelope is refused before a text is looked at, and the structure is left alone.
TEST(local_records, no_envelope) {
    const thread_locale in_use("latin1");
    for (const octets& in : {octets{}, octets{4, 2, 0xAC, 0xDC}, octets{4, 2, 0xAC, 0xDD, 0x30, 0}, octets{0x30, 0}}) {
        structure out(*zr::find_record("attr_s_t"));
        std::memset(out.get(), 0x5A, out.type().size);
        octets copy = in;
        zr_asn_buffer_t buffer{static_cast<unsigned int>(copy.size()), copy.data()};
        const int status = out.type().decode_lcs(buffer, out.get());
        EXPECT_EQ(status, zr_err_bad_envelope) << hex(in);
        const auto* made = static_cast<const unsigned char*>(out.get());
        EXPECT_EQ(std::count(made, made + out.type().size, 0x5A), static_cast<long>(out.type().size));
        std::memset(out.get(), 0, out.type().size);
    }
}

// A text that finds no memory behind one that did: the texts are looked at again for one that cannot be converted.
TEST(local_records, memory_ends_where_texts_are_converted) {
    const thread_locale in_use("latin1");
    structure original(*zr::find_record("yvaction_group_s_t"));
    std::mt19937 random(34);
    fill(original.type(), original.get(), random, {400, 3, true});
    const std::vector<char**> texts = texts_of(original.type(), original.get());
    ASSERT_GT(texts.size(), 1u);
    for (size_t i = 0; i < 2; ++i) {
        std::free(*texts[i]);
        *texts[i] = copy_text(std::string(i == 0 ? 1 : 1000, '\xE9'));
    }
    fail_each_allocation([&](auto&& failing) {
        caught_stderr printed;
        zr_asn_buffer_t out{};
        int status = 0;
        const bool failed = 0 != failing([&] { status = original.type().encode_lcs(out, original.get()); });
        EXPECT_EQ(status, failed ? zr_err_out_of_memory : 0);
        zr_asn_buffer_free(out);
    });
}

// One text that the local code set cannot hold, at every place that a record has for texts.
TEST(local_records, an_unconvertible_text_at_every_place) {
    const thread_locale in_use("latin1");
    std::mt19937 random(33);
    size_t places = 0;
    for (const zr::record_type* type : all_records()) {
        structure original(*type);
        fill(*type, original.get(), random, {60, 3, true});
        for (char** text : texts_of(*type, original.get())) {
            char euro[] = "\xE2\x82\xAC";
            char* const kept = std::exchange(*text, euro);
            const octets ber = encode(entry_points, original).ber;
            *text = kept;
            for (const route& way : {local_entry_points, local_object_tree}) {
                structure out(*type);
                caught_stderr printed;
                allocations watched;
                const bool converts = class_of(*type) == nullptr;
                ASSERT_EQ(decode(way, ber, out), converts ? zr_err_conversion : 0) << type->name << " " << way.name;
                EXPECT_EQ(printed.take().empty(), !converts);
                EXPECT_EQ(leftover_of_free(out), "");
                EXPECT_EQ(watched.live(), 0u);
            }
            ++places;
        }
    }
    EXPECT_GT(places, 150u);
}

// A null element stands for no value: of it and a text that cannot be converted the first one decides.
TEST(local_records, texts_beside_a_null_element) {
    const thread_locale in_use(nullptr);
    const struct {
        const char* what;
        int element;  // that holds the text; -1: the record does, before its list
        bool is_first;
    } cases[] = {
        {"the record's text", -1, true}, {"in the element before it", 0, true}, {"in the element behind it", 2, false}};
    for (const auto& c : cases) {
        for (const char* text : {"registry", "r\xE9gistre"}) {
            SCOPED_TRACE(std::string(c.what) + ": " + text);
            structure chain(zr::record<yvprincipal_chain_s_t>::type);
            auto& made = chain.as<yvprincipal_chain_s_t>();
            made.count = 3;
            made.principals = static_cast<yvprincipal_s_t**>(zeroed(3 * sizeof(yvprincipal_s_t*)));
            for (int i : {0, 2}) {  // numbers come before their texts
                made.principals[i] = static_cast<yvprincipal_s_t*>(zeroed(sizeof(yvprincipal_s_t)));
                made.principals[i]->pa = static_cast<sec_id_pa_t*>(zeroed(sizeof(sec_id_pa_t)));
            }
            (c.element < 0 ? made.name : made.principals[c.element]->pa->id.name) = copy_text(text);
            const bool is_ascii = text[1] == 'e';
            for (const route& way : {local_entry_points, local_object_tree}) {
                caught_stderr printed;
                EXPECT_EQ(encode(way, chain).status, is_ascii || !c.is_first ? zr_err_out_of_memory : zr_err_conversion)
                    << way.name;
            }
        }
    }
}

}  // namespace
}  // namespace zr_test
