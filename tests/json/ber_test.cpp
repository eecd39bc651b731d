// The walk over any BER: headers, offsets, damage, and what an element is to a record.
#include <gtest/gtest.h>

#include <random>

#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"
#include "support/hex.h"
#include "support/routes.h"

namespace zr_test {
namespace {

using zr::json::ber_item;
using zr::json::ber_kind;

// Each item as "depth@offset", then class and tag, form, header and length: "0@0 u16c 2+5"; damage behind a "!".
std::string walked(const octets& ber) {
    static constexpr const char* classes = "uacp";
    zr::json::ber_scanner scanner(ber.data(), ber.size());
    std::string all;
    for (ber_item item; scanner.next(item);) {
        if (!all.empty()) all += ", ";
        all += std::to_string(item.depth) + "@" + std::to_string(item.offset);
        if (item.kind == ber_kind::end_of_contents) all += " end";
        if (item.kind == ber_kind::missing_end) all += " no end";
        if (item.kind == ber_kind::unreadable) all += " lost " + std::to_string(item.length);
        if (item.kind == ber_kind::element) {
            all += std::string(" ") + classes[item.cls] + std::to_string(item.tag) + (item.constructed ? "c " : "p ");
            all += std::to_string(item.header) + "+" + (item.indefinite ? "i" : std::to_string(item.length));
        }
        if (item.damage == zr::json::ber_damage::too_long && item.in_cut)
            all += " cut too";
        else if (item.damage != zr::json::ber_damage::none)
            all += std::string(" !") + damage_text(item.damage);
    }
    return all;
}

TEST(ber, items) {
    const struct {
        const char* ber;
        const char* items;
    } rows[] = {
        {"", ""},
        {"30 00 05 00", "0@0 u16c 2+0, 0@2 u5p 2+0"},
        {"30 05 02 01 05 05 00", "0@0 u16c 2+5, 1@2 u2p 2+1, 1@5 u5p 2+0"},
        {"30 80 04 80 00 00 00 00",
         "0@0 u16c 2+i, 1@2 u4p 2+i !an indefinite length in the primitive form, 2@4 end, 1@6 end"},
        {"24 80 04 01 61 00 00 05 00", "0@0 u4c 2+i, 1@2 u4p 2+1, 1@5 end, 0@7 u5p 2+0"},
        // Tags of one octet and more, and the largest that 64 bits hold.
        {"1e 00 5e 00 9e 00 de 00", "0@0 u30p 2+0, 0@2 a30p 2+0, 0@4 c30p 2+0, 0@6 p30p 2+0"},
        {"9f 1f 00 bf 81 00 00 7f 83 ff 7f 00", "0@0 c31p 3+0, 0@3 c128c 4+0, 0@7 a65535c 5+0"},
        {"9f 80 1f 00", "0@0 c31p 4+0"},
        {"9f 81 ff ff ff ff ff ff ff ff 7f 00", "0@0 c18446744073709551615p 12+0"},
        {"9f 82 80 80 80 80 80 80 80 80 00 01 07", "0@0 c0p 12+1 !the tag number is too large to tell"},
        // Lengths.
        {"04 81 01 07", "0@0 u4p 3+1"},
        {"04 89 00 00 00 00 00 00 00 00 01 07", "0@0 u4p 11+1"},
        {"04 03 61 62", "0@0 u4p 2+2 !the contents run over the end"},
        {"04 88 ff ff ff ff ff ff ff ff 61", "0@0 u4p 10+1 !the contents run over the end"},
        {"04 8a 01 00 00 00 00 00 00 00 00 00 61", "0@0 u4p 12+1 !the contents run over the end"},
        // A constructed one that runs over ends with the outer one. It is entered when all in it can be read, else not.
        {"30 03 30 05 05 05 00", "0@0 u16c 2+3, 1@2 u16c 2+1 !the contents run over the end, 0@5 u5p 2+0"},
        {"30 04 30 05 05 00 05 00",
         "0@0 u16c 2+4, 1@2 u16c 2+2 !the contents run over the end, 2@4 u5p 2+0, 0@6 u5p 2+0"},
        {"30 06 30 05 30 80 05 00", "0@0 u16c 2+6, 1@2 u16c 2+4 !the contents run over the end"},
        // Octets that were cut off: all that is open ends there, and one of them tells it.
        {"30 09 30 06 04 04 61",
         "0@0 u16c 2+5 !the contents run over the end, 1@2 u16c 2+3 cut too, 2@4 u4p 2+1 cut too"},
        {"30 80 30 80 30 06 04 04 61",
         "0@0 u16c 2+i, 1@2 u16c 2+i, 2@4 u16c 2+3 !the contents run over the end, 3@6 u4p 2+1 cut too"},
        {"30 09 30 03 30 02 05",
         "0@0 u16c 2+5 !the contents run over the end, 1@2 u16c 2+3, 2@4 u16c 2+1 !the contents run over the end"},
        // An indefinite length misses no end that something too long has taken.
        {"30 06 24 80 04 07 00 00", "0@0 u16c 2+6, 1@2 u4c 2+i, 2@4 u4p 2+2 !the contents run over the end"},
        {"30 04 02 ff 01 02 05 00", "0@0 u16c 2+4, 1@2 lost 4 !the length octet ff means nothing, 0@6 u5p 2+0"},
        {"30 02 04 82 05 00", "0@0 u16c 2+2, 1@2 lost 2 !the length is cut off, 0@4 u5p 2+0"},
        {"30 02 1f 81 05 00", "0@0 u16c 2+2, 1@2 lost 2 !the identifier is cut off, 0@4 u5p 2+0"},
        // What cannot be read takes the indefinite lengths around it along.
        {"30 06 30 80 30 80 02 ff 05 00",
         "0@0 u16c 2+6, 1@2 u16c 2+i, 2@4 u16c 2+i, 3@6 lost 2 !the length octet ff "
         "means nothing, 0@8 u5p 2+0"},
        {"30 04 04 80 01 02 05 00",
         "0@0 u16c 2+4, 1@2 u4p 2+i !an indefinite length in the primitive form, 2@4 lost 2 "
         "!contents without a length, 0@6 u5p 2+0"},
        // End-of-contents octets: too few, too many, false.
        {"30 80 30 80 00 00", "0@0 u16c 2+i, 1@2 u16c 2+i, 2@4 end, 1@6 no end"},
        {"30 02 00 00", "0@0 u16c 2+2, 1@2 u0p 2+0 !end-of-contents octets where no indefinite length is open"},
        {"30 80 00 01 07 00 00",
         "0@0 u16c 2+i, 1@2 u0p 2+1 !the tag of end-of-contents octets, but not 00 00, 1@5 end"},
        {"30 80 00", "0@0 u16c 2+i, 1@2 lost 1 !the length is cut off"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(walked(bytes(row.ber)), row.items) << row.ber;
}

// Whatever the octets are, each belongs to one item, in order: a header, contents of a primitive element,
// end-of-contents octets, or octets that could not be read.
void expect_all_octets(const octets& ber) {
    zr::json::ber_scanner scanner(ber.data(), ber.size());
    size_t at = 0;
    size_t depth = 0;
    for (ber_item item; scanner.next(item);) {
        ASSERT_EQ(item.offset, at) << hex(ber);
        ASSERT_LE(item.depth, depth) << hex(ber);
        if (item.kind != ber_kind::missing_end) at += item.opens() ? item.header : item.header + item.length;
        depth = item.opens() ? item.depth + 1 : item.depth;
        ASSERT_LE(at, ber.size()) << hex(ber);
    }
    ASSERT_EQ(at, ber.size()) << hex(ber);
}

TEST(ber, loses_no_octet) {
    std::mt19937 random(5);
    static constexpr unsigned char likely[] = {0x30, 0x80, 0x00, 0x00, 0x24, 0x1F, 0xFF, 0x81, 0x02, 0x04, 0x05, 0x3F};
    for (int i = 0; i < 50000; ++i) {
        octets ber(random() % 40);
        for (unsigned char& octet : ber)
            octet = random() % 3 == 0 ? static_cast<unsigned char>(random()) : likely[random() % sizeof(likely)];
        ASSERT_NO_FATAL_FAILURE(expect_all_octets(ber));
    }
}

TEST(ber, a_million_levels) {
    octets ber;
    for (int i = 0; i < 1000000; ++i)
        ber.insert(ber.end(), {0x30, 0x80});
    ASSERT_NO_FATAL_FAILURE(expect_all_octets(ber));
    ber.insert(ber.end(), 2000000, 0);
    ASSERT_NO_FATAL_FAILURE(expect_all_octets(ber));
}

// In an encoding of the library every element is something to the record, and its names lead to it.
TEST(record_guide, knows_every_element) {
    std::mt19937 random(6);
    for (const zr::record_type* type : all_records()) {
        SCOPED_TRACE(type->name);
        for (int i = 0; i < 8; ++i) {
            structure original(*type);
            fill(*type, original.get(), random, {500, 4, false});
            const octets plain = encode(entry_points, original).ber;
            for (const octets& ber : {plain, rewrite_ber(parse_ber(plain), random)}) {
                zr::json::ber_scanner scanner(ber.data(), ber.size());
                zr::json::record_guide guide(type);
                const auto missing = [&](size_t, const zr::field& field) {
                    ADD_FAILURE() << field.name << " is missing";
                };
                for (ber_item item; scanner.next(item);) {
                    guide.leave(item.depth, missing);
                    if (item.kind != ber_kind::element) continue;
                    const zr::json::record_place place = guide.visit(item);
                    ASSERT_NE(place.what, zr::json::record_place::role::none) << guide.path() << hex(ber);
                    ASSERT_LT(place.what, zr::json::record_place::role::unexpected) << guide.path() << hex(ber);
                    ASSERT_EQ(guide.path().empty(), place.what == zr::json::record_place::role::record);
                }
                guide.leave(0, missing);
            }
        }
    }
}

}  // namespace
}  // namespace zr_test
