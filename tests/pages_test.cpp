// Tables in docs/ that the library itself makes or knows.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>

#include "asn1/status_text.h"
#include "json/document/record_reader.h"
#include "support/hex.h"
#include "support/routes.h"
#include "zrasn/decode.h"

namespace zr_test {
namespace {

std::string page(const char* name) {
    std::ifstream file(std::string(ZRASN_DOCS) + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

// How many lines of a table there are, its head included.
size_t rows_of(const std::string& page) {
    size_t rows = 0;
    for (size_t at = page.find("\n| "); at != page.npos; at = page.find("\n| ", at + 1))
        ++rows;
    return rows;
}

// Each status with where it comes from, a cause and a remedy.
TEST(pages, statuses) {
    const std::string all = page("/statuses.md");
    for (const zr::status_row& row : zr::statuses()) {
        const std::regex line("\n\\| " + std::to_string(row.status) + " \\| `" + row.name +
                              "` \\| \\w[^|]+\\| \\w[^|]+\\| \\w[^|]+\\|\n");
        EXPECT_TRUE(std::regex_search(all, line)) << row.status << " " << row.name;
    }
    EXPECT_EQ(rows_of(all), zr::statuses().count + 1);
}

// What a reader does with octets of a newer or an older peer.
struct row {
    const char* change;
    const char* record;
    octets sent;        // the record, or with the envelope's header
    const char* reads;  // what the plain reader has; empty when it refuses
    const char* value;  // that, as JSON
};

octets sequence(const octets& contents) { return element(0x30, contents); }
octets sequence(const char* contents) { return sequence(bytes(contents)); }
octets times(size_t count, const octets& all) {
    octets repeated;
    for (; count != 0; --count)
        repeated.insert(repeated.end(), all.begin(), all.end());
    return repeated;
}

// As Markdown. Statuses are those of the decode itself.
std::string line_of(const row& row) {
    const zr::record_type& type = *zr::find_record(row.record);
    octets in = row.sent;
    if (in[0] > 5) in = octets{4, 2, 0xAC, 0xDC} + in;
    std::string line = "| " + std::string(row.change) + " |";
    for (const bool strict : {false, true}) {
        structure made(type), expected(type);
        zr::decode_options options;
        options.strict = strict;
        zr::decode_report report;
        const int status = type.decode(in.data(), in.size(), made.get(), options, report);
        line += status == 0 ? " reads it" : " " + std::to_string(status);
        if (status == 0) {
            zr::json::json_error error;
            EXPECT_TRUE(zr::json::read_json(row.value, type, expected.get(), error)) << error.message;
            EXPECT_EQ(difference(type, made.get(), expected.get()), "") << row.change;
            if (!strict && *row.reads != 0) line += std::string(": ") + row.reads;
        }
        line += " |";
    }
    return line;
}

TEST(pages, evolution) {
    const char* const value = R"({"type":1,"str":"a","data":"ff"})";
    const octets sent = sequence("020101 0c0161 0401ff");
    const char* const id = "\"6ba7b810-9dad-11d1-80b4-00c04fd430c8\"";
    const std::string numbers = "02046ba7b810 0203009dad 020211d1 02020080 020200b4";
    const octets none = sequence(sequence(""));  // no attributes
    const octets uuid = sequence((numbers + "040600c04fd430c8").c_str());
    const octets action = sequence(bytes("020101 0c00 0c00 0c00 020100 020100") + none);
    const row rows[] = {
        {"a member more at the end", "value_s_t", sequence("020101 0c0161 0401ff 0c00"), "", ""},
        {"a member more before others", "value_s_t", sequence("020101 020105 0c0161 0401ff"), "", ""},
        {"a member fewer at the end", "value_s_t", sequence("020101 0c0161"), "", ""},
        {"a member fewer before others", "value_s_t", sequence("0c0161 0401ff"), "", ""},
        {"members in another order", "value_s_t", sequence("020101 0401ff 0c0161"), "", ""},
        {"members of one type in another order", "azn_util_password_in_s_t", sequence("0c0162 0c0161"),
         "each as the other", R"({"str_a":"b","str_b":"a"})"},
        {"a member of another type", "value_s_t", sequence("020101 040161 0401ff"), "", ""},
        {"an optional member more, left out", "value_s_t", sent, "nothing is new", value},
        {"an optional member more, there", "value_s_t", sequence(bytes("020101 0c0161 0401ff") + none), "", ""},
        {"a member that is optional here is left out", "yvprincipal_s_t", sequence("020101 020102"), "it is absent",
         R"({"int_a":1,"pa":null,"int_b":2,"ext":null})"},
        {"a longer list", "acl_permset_s_t", sequence(sequence("020101 020102 020103")), "all elements",
         R"({"perms":[1,2,3]})"},
        {"a list longer than its count can say (65,535)", "sec_id_pa_t",
         sequence(sequence(uuid + bytes("0c00")) + sequence(times(65536, sequence(uuid + bytes("0c00"))))), "", ""},
        {"an attribute more in an attribute list", "attrlist_s_t",
         sequence(sequence(sequence("0c0161 3000") + sequence("0c0162 3000"))), "it is one more in the list",
         R"({"attrs":[{"name":"a","values":[]},{"name":"b","values":[]}]})"},
        {"a slot behind the last one", "yvaction_group_s_t",
         sequence(bytes("0c00") + sequence(action + times(31, bytes("0500")) + action) + none), "without it",
         R"({"actions":[{"int_a":1}]})"},
        {"a number beyond its member", "uuid_t",
         sequence("02046ba7b810 0203019dad 020211d1 02020080 020200b4 040600c04fd430c8"), "its low 8 or 16 bits", id},
        {"a number beyond 32 bits", "acl_permset_s_t", sequence(sequence("02057f00000001")), "0", R"({"perms":[0]})"},
        {"more octets than a fixed size", "uuid_t", sequence((numbers + "040700c04fd430c8ff").c_str()), "the first",
         id},
        {"fewer octets than a fixed size", "uuid_t", sequence((numbers + "040500c04fd430").c_str()),
         "zeros behind them", "\"6ba7b810-9dad-11d1-80b4-00c04fd43000\""},
        {"a text that is not UTF-8", "value_s_t", sequence("020101 0c01e9 0401ff"), "its octets",
         R"({"type":1,"str":{"hex":"e9"},"data":"ff"})"},
        {"another number where a record has its version", "yvobj_update_s_t", sequence("020102 020103 040100 020104"),
         "it is not looked at", R"({"int_a":3,"name":"","int_b":4})"},
        {"octets behind the record", "value_s_t", sent + bytes("3000"), "they are not looked at", value},
        {"another version in the envelope", "value_s_t", bytes("0403acdc") + sent, "", ""},
        {"a longer header of the envelope", "value_s_t", bytes("0502acdc00") + sent, "it is stepped over", value},
        {"another tag of the record", "value_s_t", element(0x60, bytes("020101 0c0161 0401ff")), "", ""},
    };
    const std::string all = page("/evolution.md");
    for (const row& row : rows) {
        const std::string line = line_of(row) + "\n";
        EXPECT_NE(all.find("\n" + line), all.npos) << "the page lacks the line\n" << line;
    }
    EXPECT_EQ(rows_of(all), std::size(rows) + 1);

    size_t with_attributes = 0;
    for (const zr::record_type* type : all_records())
        with_attributes += std::any_of(type->begin(), type->end(), [](const zr::field& field) {
            return field.record == zr::find_record("attrlist_s_t");
        });
    const std::string count =
        std::to_string(with_attributes) + " of the " + std::to_string(all_records().size()) + " records";
    EXPECT_NE(all.find(count), all.npos) << "the page lacks: " << count;
}

}  // namespace
}  // namespace zr_test
