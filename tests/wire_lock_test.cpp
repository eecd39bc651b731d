// What the octets of each record mean, held in wire.lock: a change that peers would notice fails here until the lock is
// written anew (make wire-lock).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "json/example.h"
#include "json/record_reader.h"
#include "support/routes.h"

namespace zr_test {
namespace {

// All that decides which octets a member has and what is read from them.
std::string shape_of(const zr::field& field) {
    std::string value;
    switch (field.value) {
        case zr::value_kind::integer:
            value = (field.integer.is_signed ? "int" : "uint") + std::to_string(8 * field.integer.octets) + "_t";
            break;
        case zr::value_kind::version:
            value = "INTEGER 1";
            break;
        case zr::value_kind::text:
            value = "text";
            break;
        case zr::value_kind::stored_text:
            value = "stored text";
            break;
        case zr::value_kind::octets:
            value = "octets";
            break;
        case zr::value_kind::fixed_octets:
            value = std::to_string(field.size) + " octets";
            break;
        case zr::value_kind::record:
            value = field.record->name;
            break;
    }
    switch (field.held) {
        case zr::holding::one:
            break;
        case zr::holding::optional:
            return "optional " + value;
        case zr::holding::list:
        case zr::holding::pointer_list:
            return "list of " + value + (field.count.octets == 2 ? ", 65535 at most" : "");
        case zr::holding::slots:
            return std::to_string(field.size) + " slots of " + value;
    }
    return value;
}

// A digest of the octets of the record's example (FNV-1a, 64 bits).
std::string digest_of(const zr::record_type& type) {
    structure example(type);
    zr::tool::json_error error;
    EXPECT_TRUE(zr::tool::read_json(zr::tool::example_json(type), type, example.get(), error)) << error.message;
    uint64_t digest = 0xCBF29CE484222325;
    for (const unsigned char octet : encode(entry_points, example).ber)
        digest = (digest ^ octet) * 0x100000001B3;
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(digest));
    return digits;
}

// A line for each record, "name digest", and below it one for each member, "    name shape".
std::string lock_of_the_registry() {
    std::string lock;
    for (const zr::record_type* type : all_records()) {
        lock += type->name + (" " + digest_of(*type)) + "\n";
        for (const zr::field& field : *type)
            lock += "    " + (field.name + (" " + shape_of(field))) + "\n";
    }
    return lock;
}

struct locked_record {
    std::string digest;
    std::vector<std::pair<std::string, std::string>> members;
};

std::map<std::string, locked_record> parse(const std::string& lock) {
    std::map<std::string, locked_record> records;
    locked_record* last = nullptr;
    std::istringstream lines(lock);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') continue;
        const size_t begin = line.find_first_not_of(' ');
        const size_t space = line.find(' ', begin);
        const std::string name = line.substr(begin, space - begin), rest = line.substr(space + 1);
        if (begin == 0)
            (last = &records[name])->digest = rest;
        else
            last->members.emplace_back(name, rest);
    }
    return records;
}

// What has changed from one lock to the other, a line each. A record whose members are the same has kept its octets
// unless those of a record inside have changed, which is told there.
std::string changes(const std::string& from, const std::string& to) {
    std::string found;
    const std::map<std::string, locked_record> before = parse(from), after = parse(to);
    bool shapes_changed = false;
    for (const auto& [name, record] : before) {
        const auto now = after.find(name);
        if (now == after.end()) {
            found += name + " is gone\n";
            continue;
        }
        const auto& members = now->second.members;
        for (size_t i = 0; i < std::max(members.size(), record.members.size()); ++i) {
            if (i >= members.size()) {
                found += name + "." + record.members[i].first + " is gone\n";
            } else if (i >= record.members.size()) {
                found += name + "." + members[i].first + " is new: " + members[i].second + "\n";
            } else if (members[i] != record.members[i]) {
                found += name + "." + members[i].first + ": " + members[i].second + " instead of " +
                         record.members[i].first + ": " + record.members[i].second + "\n";
            }
        }
        shapes_changed = shapes_changed || members != record.members;
    }
    for (const auto& [name, record] : after) {
        const auto old = before.find(name);
        if (old == before.end())
            found += name + " is new\n";
        else if (!shapes_changed && old->second.digest != record.digest)
            found += name + ": the octets of its example have changed\n";
    }
    return found;
}

TEST(wire_lock, holds) {
    const std::string now = lock_of_the_registry();
    if (std::getenv("ZRASN_WRITE_WIRE_LOCK") != nullptr) {
        std::ofstream(ZRASN_WIRE_LOCK)
            << "# Of each record: a digest of the octets of its example, and what its members are on the wire\n"
               "# (docs/evolution.md). Written by \"make wire-lock\".\n\n"
            << now;
    }
    std::ifstream file(ZRASN_WIRE_LOCK);
    const std::string lock{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(changes(lock, now), "") << "peers that are out there would notice; if that is meant: make wire-lock";
    EXPECT_GE(parse(lock).size(), 65u);
}

// A lock in which one thing is another one.
TEST(wire_lock, names_what_has_changed) {
    const std::string lock = lock_of_the_registry();
    const struct {
        const char *from, *to, *told;
    } rows[] = {
        {"    principals list of yvprincipal_s_t\n", "    principals 3 slots of yvprincipal_s_t\n",
         "yvprincipal_chain_s_t.principals: 3 slots of yvprincipal_s_t instead of principals: list of "
         "yvprincipal_s_t\n"},
        {"    time_mid uint16_t\n", "    time_mid int16_t\n",
         "uuid_t.time_mid: int16_t instead of time_mid: uint16_t\n"},
        {"    body optional octets\n", "", "cert_request_in.body is gone\n"},
        {"    body optional octets\n", "    body optional octets\n    more text\n",
         "cert_request_in.more is new: text\n"},
        {"sec_id_t ", "sec_id_t 0", "sec_id_t: the octets of its example have changed\n"},
        {"acl_permset_s_t ", "acl_set_s_t ", "acl_permset_s_t is gone\nacl_set_s_t is new\n"},
    };
    for (const auto& row : rows) {
        std::string changed = lock;
        const size_t at = changed.find(row.from);
        ASSERT_NE(at, changed.npos) << row.from;
        changed.replace(at, std::string(row.from).size(), row.to);
        EXPECT_EQ(changes(lock, changed), row.told);
    }
}

}  // namespace
}  // namespace zr_test
