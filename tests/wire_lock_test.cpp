// What the octets of each record mean, held in wire.lock: a change that peers would notice fails here until the lock is
// written anew (make wire-lock).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

#include "json/ber/field_words.h"
#include "json/describe/sample.h"
#include "json/document/record_reader.h"
#include "support/routes.h"

namespace zr_test {
namespace {

// A digest of the octets of the record's example (FNV-1a, 64 bits).
std::string digest_of(const zr::record_type& type) {
    structure example(type);
    zr::json::json_error error;
    EXPECT_TRUE(zr::json::read_json(zr::json::sample_json(type, 0, true), type, example.get(), error)) << error.message;
    uint64_t digest = 0xCBF29CE484222325;
    for (const unsigned char octet : encode(entry_points, example).ber)
        digest = (digest ^ octet) * 0x100000001B3;
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(digest));
    return digits;
}

using lock = std::map<std::string, std::string>;

// The digest of each record, and under "record.member" what decides which octets a member has and what is read from
// them, with its place.
lock lock_of_the_registry() {
    lock made;
    for (const zr::record_type* type : all_records()) {
        made[type->name] = digest_of(*type);
        for (const zr::field& field : *type)
            made[type->name + ("." + std::string(field.name))] =
                zr::json::kind_in_words(field) +
                (zr::is_list(field.held) ? ", counted by " + zr::json::c_integer(field.count) : "") + " (" +
                std::to_string(&field - type->begin() + 1) + ")";
    }
    return made;
}

// What has changed, a line each. The octets of records follow from the members that have changed, so these stand alone.
std::string changes(const lock& from, const lock& to) {
    std::string members, records;
    lock all = from;
    all.insert(to.begin(), to.end());
    for (const auto& [name, unused] : all) {
        const auto before = from.find(name), now = to.find(name);
        std::string& told = name.find('.') != name.npos ? members : records;
        if (now == to.end())
            told += name + " is gone\n";
        else if (before == from.end())
            told += name + " is new\n";
        else if (now->second != before->second)
            told += name + ": " + now->second + " instead of " + before->second + "\n";
    }
    return members.empty() ? records : members;
}

TEST(wire_lock, holds) {
    const lock now = lock_of_the_registry();
    if (std::getenv("ZRASN_WRITE_WIRE_LOCK") != nullptr) {
        std::ofstream file(ZRASN_WIRE_LOCK);
        file << "# Of each record a digest of the octets of its example, of each member what it is and its place\n"
                "# (docs/evolution.md). Written by \"make wire-lock\".\n";
        for (const auto& [name, value] : now)
            file << name << " " << value << "\n";
    }
    std::ifstream file(ZRASN_WIRE_LOCK);
    lock before;
    for (std::string line; std::getline(file, line);)
        if (line[0] != '#') before[line.substr(0, line.find(' '))] = line.substr(line.find(' ') + 1);
    EXPECT_EQ(changes(before, now), "") << "peers that are out there would notice; if that is meant: make wire-lock";
    EXPECT_GE(before.size(), 250u);
}

TEST(wire_lock, names_what_has_changed) {
    const lock before = lock_of_the_registry();
    const auto change = [&before](const char* name, const char* value, const std::string& told) {
        lock now = before;
        now.erase(name);
        if (*value != 0) now[name] = value;
        EXPECT_EQ(changes(before, now), told);
    };
    change("uuid_t.time_mid", "int16_t (2)", "uuid_t.time_mid: int16_t (2) instead of uint16_t (2)\n");
    change("cert_request_in.body", "", "cert_request_in.body is gone\n");
    change("cert_request_in.more", "text (5)", "cert_request_in.more is new\n");
    change("sec_id_t", "0", "sec_id_t: 0 instead of " + before.at("sec_id_t") + "\n");
}

}  // namespace
}  // namespace zr_test
