// Octets from outside: zr::decode with its options, limits and report, and where envelopes end.
#include "zrasn/decode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base_idls/attrlist_asn.h"
#include "base_idls/namevalue_asn.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/out_of_memory.h"
#include "support/routes.h"
#include "support/thread_locale.h"

namespace zr_test {
namespace {

zr::decode_options strictly() {
    zr::decode_options options;
    options.strict = true;
    return options;
}

std::string text_of(size_t length) {
    std::string octets;
    for (; length != 0; --length)
        octets += "61 ";
    return octets;
}

int call(const octets& in, structure& out, const zr::decode_options& options, zr::decode_report& report) {
    return out.type().decode(in.data(), in.size(), out.get(), options, report);
}

TEST(decode_call, reports) {
    // One attribute "dept" with the values { 4, "", hugo, 0 octets } and { 4, "", 1 octet }.
    const std::string head = "04 02 ac dc", list = "30 25 30 23 30 21 0c 04 64 65 70 74 30 19 ";
    const std::string first = "30 0b 02 01 04 0c 04 68 75 67 6f 04 00 ", second = "30 0a 02 01 04 0c 02 c3 a9 04 01 ff";
    const struct {
        const char* what;
        std::string in;
        bool strict;
        int status;
        size_t offset;
        std::string path;
        int found;
        size_t consumed, missing;
        std::string reason;
    } rows[] = {
        {"fits", head + list + first + second, true, 0, 0, "", -1, 43, 0, "ok"},
        {"octets behind it", head + list + first + second + "00", false, 0, 0, "", -1, 43, 0, "ok"},
        {"of indefinite length", head + "30 80 30 80 30 80 0c 00 30 80 00 00 00 00 00 00 00 00 ff", false, 0, 0, "", -1,
         22, 0, "ok"},
        {"another value in one of indefinite length",
         head + "30 80 " + "30 80 30 80 0c 00 2c 80 04 00 00 00 00 00 00 00 00 00" + "ff ff", false, zr_err_no_match,
         12, "attrs[0].values", 0x2C, 0, 0, "no_match"},
        {"octets behind it, strictly", head + list + first + second + "00", true, zr_err_trailing_data, 43, "", 0, 0, 0,
         "trailing_data"},
        {"nothing", "", false, zr_err_bad_envelope, 0, "", -1, 0, 6, "truncated"},
        {"a header", head, false, zr_err_bad_envelope, 0, "", 4, 0, 2, "truncated"},
        {"another version", "04 03 ac dc" + list + first + second, false, zr_err_bad_envelope, 0, "", 4, 0, 0,
         "bad_envelope"},
        {"a longer header", "05 02 ac dc 00" + list + first + second, false, 0, 0, "", -1, 44, 0, "ok"},
        {"a longer header, strictly", "05 02 ac dc 00" + list + first + second, true, zr_err_bad_envelope, 0, "", 5, 0,
         0, "bad_envelope"},
        {"cut in a text", head + "30 25 30 23 30 21 0c 04 64", false, zr_err_data_ends_early, 4, "", 0x30, 0, 30,
         "truncated"},
        {"a value that is longer than the list", head + "30 0e 30 0c 30 0a 0c 01 41 30 05 30 0b 02 01 04", false,
         zr_err_data_ends_early, 15, "attrs[0].values[0]", 0x30, 0, 0, "data_ends_early"},
        {"another value", head + "30 09 30 07 30 05 02 01 41 30 00", false, zr_err_no_match, 10, "attrs[0].name", 2, 0,
         0, "no_match"},
        {"a longer length, strictly", head + "30 81 02 30 00", true, zr_err_bad_contents, 4, "", 0x30, 0, 0,
         "not_canonical"},
        {"an integer of two octets where one would do",
         head + "30 17 30 15 30 13 0c 00 30 0f 30 0d 02 02 00 04 0c 04 68 75 67 6f "
                "04 01 ff",
         true, zr_err_bad_contents, 16, "attrs[0].values[0].type", 2, 0, 0, "not_canonical"},
        {"a text with a zero octet", head + "30 0a 30 08 30 06 0c 02 00 41 30 00", true, zr_err_bad_contents, 10,
         "attrs[0].name", 0x0C, 0, 0, "not_canonical"},
        {"a text that is not UTF-8", head + "30 0a 30 08 30 06 0c 02 c3 41 30 00", true, zr_err_bad_contents, 10,
         "attrs[0].name", 0x0C, 0, 0, "not_canonical"},
        {"segments", head + "30 0c 30 0a 30 08 2c 04 04 02 41 42 30 00", true, zr_err_bad_contents, 10, "attrs[0].name",
         0x2C, 0, 0, "not_canonical"},
    };
    zr::decode_report report;  // of one call nothing is left for the next
    for (const auto& row : rows) {
        for (const bool packed : {false, true}) {
            SCOPED_TRACE(row.what + std::string(packed ? ", packed" : ""));
            const octets in = bytes(row.in);
            zr::packed_blocks blocks;
            structure out(zr::record<attrlist_s_t>::type);
            report.passed = zr::decode_limit::heap;
            caught_stderr printed;
            zr::decode_options options;
            options.strict = row.strict;
            EXPECT_EQ(packed ? out.type().decode_packed(in.data(), in.size(), out.get(), blocks, options, report)
                             : call(in, out, options, report),
                      row.status);
            EXPECT_EQ(report.status, row.status);
            EXPECT_EQ(report.consumed, row.consumed);
            EXPECT_EQ(report.missing, row.missing);
            EXPECT_EQ(report.reason(), row.reason);
            EXPECT_EQ(report.path, row.path);
            EXPECT_EQ(report.passed, zr::decode_limit::none);
            if (row.status != 0) {
                EXPECT_EQ(report.offset, row.offset);
                EXPECT_EQ(report.found, row.found);
            }
            EXPECT_EQ(printed.take(), "");
            if (packed) std::memset(out.get(), 0, out.type().size);
        }
    }
    structure out(zr::record<attrlist_s_t>::type);
    EXPECT_EQ(call(bytes(head + "31 00"), out, {}, report), zr_err_no_match);
    EXPECT_EQ(report.tag, 16);
    EXPECT_STREQ(zr::decode_report().name(), "zr_ok");
}

// What strict accepts, an encode gives back; what an encode gives, strict accepts unless a text is not UTF-8. It
// refuses nothing else, and on the way without a status of its own it says what the entry points say.
TEST(decode_call, strict_accepts_what_an_encode_gives_back) {
    std::mt19937 random(41);
    size_t accepted = 0, odd = 0, refused = 0;
    for (const zr::record_type* type : all_records()) {
        for (unsigned i = 0; i < 150; ++i) {
            structure original(*type);
            fill(*type, original.get(), random, {250, 5, i % 4 != 0});
            octets ber = encode(entry_points, original).ber;
            if (i % 3 == 1) ber = rewrite_ber(parse_ber(ber), random, {i % 2 != 0, i % 5 == 0, i % 4 < 2, false});
            if (i % 3 == 2) ber[random() % ber.size()] ^= static_cast<unsigned char>(1 << random() % 8);
            envelope in(ber);
            structure plain(*type), strict(*type);
            zr::decode_report report;
            const int expected = decode(entry_points, ber, plain);
            const int status = call(in.all(), strict, strictly(), report);
            if (status == 0) {
                ++accepted;
                ASSERT_EQ(hex(encode(entry_points, strict).ber), hex(ber)) << type->name;
                ASSERT_EQ(difference(*type, strict.get(), plain.get()), "");
            } else if (expected == 0) {
                ++odd;
                ASSERT_TRUE(status == zr_err_trailing_data || status == zr_err_bad_contents) << status;
                ASSERT_TRUE(i % 3 != 0 || i % 4 == 0) << type->name << ": " << hex(ber);
                ASSERT_EQ(leftover(*type, strict.get()), "");
            } else {
                ++refused;
                ASSERT_EQ(status, expected) << type->name << ": " << hex(ber);
            }
        }
    }
    EXPECT_GT(accepted, 3000u);
    EXPECT_GT(odd, 1000u);
    EXPECT_GT(refused, 1000u);
}

// What is odd only in its value, at every kind of value.
TEST(decode_call, strict_judges_values) {
    const std::string action = "30 13 02 01 00 0c 00 0c 00 0c 00 02 01 00 02 01 00 30 02 30 00 ", none = "30 02 30 00";
    const std::string rest = "02 01 03 02 01 04 02 01 05 04 06 00 01 02 03 04 05";
    const struct {
        const char *what, *record;
        std::string in;
        const char* path;  // of the first value that would be written otherwise; null when it is accepted
    } rows[] = {
        {"integers", "uuid_t", "30 17 02 01 01 02 01 02 " + rest, nullptr},
        {"the least and the greatest", "uuid_t", "30 1c 02 04 80 00 00 00 02 03 00 ff ff " + rest, nullptr},
        {"beyond a member", "uuid_t", "30 19 02 01 01 02 03 01 00 00 " + rest, "time_mid"},
        {"below a member", "uuid_t", "30 17 02 01 01 02 01 ff " + rest, "time_mid"},
        {"in five octets", "uuid_t", "30 1b 02 05 00 80 00 00 00 02 01 02 " + rest, "time_low"},
        {"eight bits alike", "uuid_t", "30 18 02 02 00 80 02 01 02 " + rest, nullptr},
        {"nine bits alike", "uuid_t", "30 18 02 02 ff 80 02 01 02 " + rest, "time_low"},
        {"fewer octets than the member has", "uuid_t",
         "30 16 02 01 01 02 01 02 02 01 03 02 01 04 02 01 05 04 05 00 01 02 03 04", "node"},
        {"stored texts", "cert_request_in", "30 0a 02 01 01 04 02 61 00 04 01 00", nullptr},
        {"another version", "cert_request_in", "30 0a 02 01 02 04 02 61 00 04 01 00", "version"},
        {"without its zero octet", "cert_request_in", "30 09 02 01 01 04 01 61 04 01 00", "str_a"},
        {"without an octet", "cert_request_in", "30 09 02 01 01 04 02 61 00 04 00", "str_b"},
        {"two zero octets", "cert_request_in", "30 0b 02 01 01 04 03 61 00 00 04 01 00", "str_a"},
        {"a body", "cert_request_in", "30 0d 02 01 01 04 02 61 00 04 01 00 04 01 00", nullptr},
        {"an empty body", "cert_request_in", "30 0c 02 01 01 04 02 61 00 04 01 00 04 00", "body"},
        {"slots", "yvaction_group_s_t", "30 1f 0c 00 30 17 05 00 " + action + none, nullptr},
        {"an empty slot at the end", "yvaction_group_s_t", "30 21 0c 00 30 19 05 00 " + action + "05 00" + none,
         "actions[2]"},
        {"nothing but empty slots", "yvaction_group_s_t", "30 0a 0c 00 30 02 05 00" + none, "actions[0]"},
        {"a long text", "yvaction_group_s_t", "30 81 89 0c 81 80" + text_of(128) + "30 00" + none, nullptr},
        {"a length in an octet too many", "yvaction_group_s_t", "30 81 88 0c 81 7f" + text_of(127) + "30 00" + none,
         "name"},
        {"a zero octet behind many", "yvaction_group_s_t", "30 18 0c 10 " + text_of(15) + "00 30 00" + none, "name"},
        {"a zero octet before many", "yvaction_group_s_t", "30 1a 0c 12 00 " + text_of(17) + "30 00" + none, "name"},
        {"letters that are not ASCII", "yvaction_group_s_t", "30 12 0c 0a c3 a9 " + text_of(8) + "30 00" + none,
         nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const zr::record_type& type = *zr::find_record(row.record);
        const octets in = envelope(bytes(row.in)).all();
        structure out(type), packed(type);
        zr::decode_report report, packed_report;
        zr::packed_blocks blocks;
        EXPECT_EQ(call(in, out, strictly(), report), row.path == nullptr ? 0 : zr_err_bad_contents);
        EXPECT_EQ(type.decode_packed(in.data(), in.size(), packed.get(), blocks, strictly(), packed_report),
                  report.status);
        EXPECT_EQ(difference(type, out.get(), packed.get()), "");
        std::memset(packed.get(), 0, type.size);
        EXPECT_STREQ(report.path, row.path != nullptr ? row.path : "");
        EXPECT_STREQ(packed_report.path, report.path);
    }
}

// A text is judged many octets at a time, or four, or each, by its length.
TEST(decode_call, strict_judges_each_octet_of_a_text) {
    const zr::record_type& type = zr::record<attr_s_t>::type;
    zr::decode_report report;
    for (size_t length = 1; length != 40; ++length) {
        for (size_t at = 0; at != length; ++at) {
            for (const int octet : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
                octets text(length, 'a');
                text[at] = static_cast<unsigned char>(octet);
                const bool good = octet == 0x01 || octet == 0x7F;
                structure out(type);
                ASSERT_EQ(
                    call(envelope(element(0x30, element(0x0C, text) + bytes("30 00"))).all(), out, strictly(), report),
                    good ? 0 : zr_err_bad_contents)
                    << length << " octets, " << octet << " at " << at;
            }
        }
    }
}

bool is_zero(structure& out) {
    const auto* const octets = static_cast<const unsigned char*>(out.get());
    return std::all_of(octets, octets + out.type().size, [](unsigned char octet) { return octet == 0; });
}

// The least limit that a decode keeps.
size_t least_limit(size_t zr::decode_limits::*limit, const octets& in, const zr::record_type& type,
                   zr::decode_limit kind) {
    size_t below = 0, enough = size_t{1} << 24;
    zr::decode_report report;
    while (below + 1 < enough) {
        const size_t middle = (below + enough) / 2;
        zr::decode_options options;
        options.limits.*limit = middle;
        structure out(type);
        std::memset(out.get(), 0x5A, type.size);
        if (call(in, out, options, report) == 0) {
            enough = middle;
            continue;
        }
        below = middle;
        EXPECT_TRUE(is_zero(out));
        EXPECT_EQ(report.status, zr_err_out_of_memory);
        EXPECT_EQ(report.passed, kind);
        EXPECT_EQ(std::string(report.reason()).find("limit_"), 0u);
        EXPECT_STREQ(zr::status_name(report.status), report.name());
    }
    return enough;
}

// A chain of so many nodes.
octets chain_of(size_t nodes) {
    octets inner;
    for (; nodes != 0; --nodes) {
        const octets list = element(0x30, inner);
        inner = element(0x30, element(0x0C, {'n'}) + element(0x30, {}) + list);
    }
    return inner;
}

TEST(decode_call, limits) {
    using limits = zr::decode_limits;
    const octets attributes =
        envelope(bytes("30 1f 30 1d 30 1b 0c 04 64 65 70 74 30 13 30 07 02 01 04 0c 00 04 00 30 08 02 01 04 "
                       "0c 00 04 01 ff"))
            .all();
    const zr::record_type& list = zr::record<attrlist_s_t>::type;
    EXPECT_EQ(least_limit(&limits::octets, attributes, list, zr::decode_limit::octets), attributes.size());
    EXPECT_EQ(least_limit(&limits::elements, attributes, list, zr::decode_limit::elements), 3u);
    EXPECT_EQ(least_limit(&limits::depth, attributes, list, zr::decode_limit::depth), 3u);
    // The arrays, and the texts and the byte string with their headers.
    EXPECT_EQ(least_limit(&limits::heap, attributes, list, zr::decode_limit::heap),
              sizeof(attr_s_t) + 2 * sizeof(value_s_t) + 6 + 2 + 2 + 2 + 3);
    // No more is allocated than the limit says, and what was allocated is released.
    zr::decode_options options;
    options.limits.heap = 100;
    const octets deep = envelope(chain_of(1000)).all();
    EXPECT_EQ(least_limit(&limits::depth, deep, zr::record<namevalue_s_t>::type, zr::decode_limit::depth), 1000u);
    structure out(zr::record<namevalue_s_t>::type);
    zr::decode_report report;
    allocations watched;
    EXPECT_EQ(call(deep, out, options, report), zr_err_out_of_memory);
    EXPECT_LE(watched.made(), 12u);
    EXPECT_EQ(watched.live(), 0u);
}

// The path of what is refused, however deep: whole where there is room for it, else its beginning and its end.
TEST(decode_call, paths_of_any_length) {
    for (size_t depth = 0; depth < 60; ++depth) {
        octets inner = element(0x30, bytes("02 00"));  // no name
        std::string path = "name";
        for (size_t i = 0; i < depth; ++i) {
            const octets before = i % 7 == 3 ? element(0x30, bytes("0c 00 30 00 30 00")) : octets();
            inner = element(0x30, bytes("0c 00 30 00") + element(0x30, before + inner));
            path.insert(0, i % 7 == 3 ? "children[1]." : "children[0].");
        }
        structure out(zr::record<namevalue_s_t>::type);
        zr::decode_report report;
        EXPECT_EQ(call(envelope(inner).all(), out, {}, report), zr_err_no_match);
        const std::string shown = report.path;
        if (path.size() <= sizeof report.path / 2) {
            EXPECT_EQ(shown, path);
        }
        const size_t gap = shown.find(" ... ");
        if (gap == shown.npos) {
            EXPECT_EQ(shown, path);
            continue;
        }
        EXPECT_LT(shown.size(), path.size());
        EXPECT_EQ(shown.substr(0, gap), path.substr(0, gap));
        const std::string end = shown.substr(gap + 5);
        EXPECT_EQ(end, path.substr(path.size() - end.size()));
        EXPECT_GT(end.size(), 80u);
    }
}

// A limit that is passed inside a slot is said, and not that the slot holds something else.
TEST(decode_call, limits_inside_slots) {
    const std::string action = "30 13 02 01 00 0c 00 0c 00 0c 00 02 01 00 02 01 00 30 02 30 00 ";
    const octets in = envelope(bytes("30 1d 0c 00 30 15 " + action + "30 02 30 00")).all();
    zr::decode_options options;
    options.limits.depth = 2;
    structure out(*zr::find_record("yvaction_group_s_t"));
    zr::decode_report report;
    EXPECT_EQ(call(in, out, options, report), zr_err_out_of_memory);
    EXPECT_EQ(report.passed, zr::decode_limit::depth);
    EXPECT_STREQ(report.path, "actions[0].ext");
    options.limits.depth = 3;
    EXPECT_EQ(call(in, out, options, report), 0);
    structure packed(out.type());
    zr::packed_blocks blocks;
    EXPECT_EQ(out.type().decode_packed(in.data(), in.size(), packed.get(), blocks, options, report), 0);
    EXPECT_EQ(difference(out.type(), out.get(), packed.get()), "");
    std::memset(packed.get(), 0, out.type().size);
#if SIZE_MAX > UINT32_MAX
    // More octets than an encoding can have are not looked at.
    options.limits.octets = SIZE_MAX;
    EXPECT_EQ(out.type().decode(in.data(), size_t{UINT32_MAX} + 1, packed.get(), options, report),
              zr_err_out_of_memory);
    EXPECT_EQ(report.passed, zr::decode_limit::octets);
#endif
}

// Texts in the local code set: where the one stands that it does not hold, and how many octets were read, in each form
// of the octets and with and without limits.
TEST(decode_call, local_texts) {
    const thread_locale in_use("latin1");
    const struct {
        std::string in;
        int status;
        size_t offset, consumed;
        std::string path;
    } rows[] = {
        {"04 02 ac dc 30 08 0c 04 63 61 c3 a9 30 00", 0, 0, 14, ""},
        {"04 02 ac dc 30 08 0c 04 63 61 c3 a9 30 00 ff", 0, 0, 14, ""},
        {"04 02 ac dc 30 80 0c 04 63 61 c3 a9 30 80 00 00 00 00 ff", 0, 0, 18, ""},
        {"04 02 ac dc 30 81 09 0c 81 04 63 61 c3 a9 30 00 ff ff", 0, 0, 16, ""},
        {"04 02 ac dc 30 0a 2c 06 04 04 63 61 c3 a9 30 00", 0, 0, 16, ""},
        {"04 02 ac dc 30 07 0c 03 e2 82 ac 30 00", zr_err_conversion, 6, 0, "name"},
        {"04 02 ac dc 30 80 0c 03 e2 82 ac 30 00 00 00", zr_err_conversion, 6, 0, "name"},
        {"04 02 ac dc 30 14 0c 01 61 30 0f 30 0d 02 01 04 0c 01 62 0c 03 e2 82 ac 04 00", zr_err_no_match, 19, 0,
         "values[0].data"},
        {"04 02 ac dc 30 13 0c 01 61 30 0e 30 0c 02 01 04 0c 03 e2 82 ac 04 02 0c 00", zr_err_conversion, 16, 0,
         "values[0].str"},
    };
    for (const auto& row : rows) {
        for (const bool limited : {false, true}) {
            SCOPED_TRACE(row.in + (limited ? ", limited" : ""));
            zr::decode_options options;
            options.local_texts = true;
            if (limited) options.limits.depth = 50;
            structure out(zr::record<attr_s_t>::type);
            zr::decode_report report;
            EXPECT_EQ(call(bytes(row.in), out, options, report), row.status);
            EXPECT_EQ(report.path, row.path);
            EXPECT_EQ(report.consumed, row.consumed);
            if (row.status != 0) {
                EXPECT_EQ(report.offset, row.offset);
            } else {
                EXPECT_STREQ(out.as<attr_s_t>().name, "ca\xE9");
            }
        }
    }
}

TEST(decode_call, memory_runs_out_without_a_word) {
    std::mt19937 random(42);
    for (const zr::record_type* type : {&zr::record<attrlist_s_t>::type, &zr::record<namevalue_s_t>::type}) {
        structure original(*type);
        fill(*type, original.get(), random, {600, 5, true});
        const octets ber = encode(entry_points, original).ber;
        for (const bool strict : {false, true}) {
            envelope in(strict ? ber : rewrite_ber(parse_ber(ber), random));
            structure out(*type);
            fail_each_allocation([&](auto&& failing) {
                zr::decode_report report;
                caught_stderr printed;
                int status = 0;
                failing([&] { status = call(in.all(), out, strict ? strictly() : zr::decode_options(), report); });
                ASSERT_TRUE(status == 0 || status == zr_err_out_of_memory);
                // A text without memory is missing; not so where an encode has to give it back.
                ASSERT_TRUE(status != 0 || !strict || difference(*type, out.get(), original.get()).empty());
                ASSERT_EQ(printed.take(), "");
                ASSERT_EQ(leftover_of_free(out), "");
            });
        }
    }
}

// Each way of reading: octets in their usual form, in others, and by the reader that keeps limits, with texts converted
// or not, and with more levels and octets than fit the room that a reader begins with.
TEST(decode_call, memory_runs_out_in_large_and_deep_records) {
    const thread_locale in_use("gb18030");  // in which the odd text is longer
    const octets none = element(0x30, {}), long_text = element(0x0C, octets(3000, 0x41));
    const octets odd_text = element(0x0C, bytes("c3 bf c3 bf c3 bf c3 bf c3 bf c3 bf c3 bf c3 bf"));
    octets deep = element(0x30, odd_text + none + none);
    for (size_t i = 0; i < 20; ++i)
        deep = element(0x30, (i % 10 == 0 ? long_text : odd_text) + element(0x30, odd_text) + element(0x30, deep));
    const octets open = bytes("30 80") + long_text + bytes("30 80 00 00 30 80") + deep + bytes("00 00 00 00");
    octets many = bytes("30 80 0c 00 30 80 00 00 30 80");  // whose definite form is half as long again
    for (int i = 0; i < 1500; ++i)
        many = many + bytes("30 80 0c 00 30 80 00 00 30 80 00 00 00 00");
    const struct {
        const char* record;
        octets ber;
    } rows[] = {
        {"namevalue_s_t", deep},
        {"namevalue_s_t", open},
        {"namevalue_s_t", many + bytes("00 00 00 00")},
        {"namevalue_s_t", many + bytes("30 80 0c 00 30 80") + element(0x0C, octets(8000, 0x41)) +
                              bytes("00 00 30 80 00 00 00 00 00 00 00 00")},
        {"namevalue_s_t", bytes("30 80 2c 06 04 04 63 61 c3 bf 30 80 2c 80 04 01 41 00 00 00 00 30 00 00 00")},
        {"attr_s_t", bytes("30 80 0c 00 30 80 30 0d 02 01 04 0c 00 24 06 04 02 41 42 04 00 00 00 00 00")},
        {"cert_request_in", bytes("30 80 02 01 01 04 02 61 00 24 05 04 01 62 04 00 24 03 04 01 41 00 00")},
    };
    for (const auto& row : rows) {
        for (const int way : {0, 1, 2, 3}) {
            SCOPED_TRACE(row.record + std::to_string(row.ber.size()) + ", way " + std::to_string(way));
            const zr::record_type& type = *zr::find_record(row.record);
            envelope in(row.ber);
            zr::decode_options options;
            options.local_texts = way % 2 != 0;
            if (way >= 2) options.limits.depth = 50;
            structure expected(type), out(type);
            zr::decode_report report;
            ASSERT_EQ(call(in.all(), expected, options, report), 0);
            fail_each_allocation([&](auto&& failing) {
                caught_stderr printed;
                int status = 0;
                const size_t failed = failing([&] { status = call(in.all(), out, options, report); });
                ASSERT_TRUE(status == 0 || (failed != 0 && status == zr_err_out_of_memory)) << status;
                // A text without memory is missing.
                if (status == 0) {
                    const std::vector<char**> wanted = texts_of(type, expected.get()),
                                              found = texts_of(type, out.get());
                    ASSERT_EQ(wanted.size(), found.size());
                    size_t missing = 0;
                    for (size_t i = 0; i < found.size(); ++i) {
                        missing += *found[i] == nullptr;
                        ASSERT_TRUE(*found[i] == nullptr || std::strcmp(*found[i], *wanted[i]) == 0);
                    }
                    ASSERT_LE(missing, failed);
                }
                ASSERT_EQ(leftover_of_free(out), "");
            });
        }
    }
}

// Octet by octet: an envelope is complete with its last octet and not before, and no look asks for more than is needed.
TEST(framing, envelopes_in_pieces) {
    std::mt19937 random(43);
    for (const zr::record_type* type : all_records()) {
        for (const bool definite : {true, false}) {
            structure original(*type);
            fill(*type, original.get(), random, {300, 4, true});
            const octets ber = encode(entry_points, original).ber;
            const octets whole = envelope(definite ? ber : rewrite_ber(parse_ber(ber), random)).all();
            octets received = whole + bytes("04 02 ac dc");  // and what follows
            zr::envelope_framing frame(whole.size());
            for (size_t length = 0; length < whole.size(); ++length) {
                ASSERT_EQ(frame.look(received.data(), length), zr::framing::incomplete) << type->name << hex(whole);
                ASSERT_GT(frame.missing(), 0u);
                ASSERT_LE(length + frame.missing(), whole.size());
            }
            ASSERT_EQ(frame.look(received.data(), received.size()), zr::framing::complete);
            ASSERT_EQ(frame.length(), whole.size());
            size_t count = 0;
            ASSERT_EQ(zr::envelope_length(received.data(), received.size(), whole.size(), count),
                      zr::framing::complete);
            ASSERT_EQ(count, whole.size());
            ASSERT_EQ(zr::envelope_length(received.data(), received.size(), whole.size() - 1, count),
                      zr::framing::never);
        }
    }
}

TEST(framing, what_begins_no_envelope) {
    const struct {
        const char *what, *in;
        zr::framing answer;
        size_t count;
    } rows[] = {
        {"no header", "00", zr::framing::never, 0},
        {"a header that ends in itself", "03 02 ac dc 00", zr::framing::never, 0},
        {"another third octet", "04 02 ad", zr::framing::never, 0},
        {"another fourth octet", "04 02 ac dd", zr::framing::never, 0},
        {"a long header", "7f 02 ac dc 00", zr::framing::incomplete, 122},
        {"longer than permitted", "04 02 ac dc 30 82 03 e5", zr::framing::never, 0},
        {"as long as permitted", "04 02 ac dc 30 82 03 e0", zr::framing::incomplete, 992},
        {"a length of eight octets", "04 02 ac dc 30 88 00 00 00 00 00 00 00 01", zr::framing::incomplete, 1},
        {"a length beyond 64 bits", "04 02 ac dc 30 89 01 00 00 00 00 00 00 00 00", zr::framing::never, 0},
        {"a primitive value of indefinite length", "04 02 ac dc 30 80 04 80", zr::framing::never, 0},
        {"an end with contents", "04 02 ac dc 30 80 00 01", zr::framing::never, 0},
        {"a tag of many octets", "04 02 ac dc 3f 80 80", zr::framing::incomplete, 2},
        {"a tag without its last octet", "04 02 ac dc 3f 81", zr::framing::incomplete, 2},
        {"a tag without a length", "04 02 ac dc 3f 81 05", zr::framing::incomplete, 1},
        {"a tag of many octets, and nothing in it", "04 02 ac dc 3f 81 05 00", zr::framing::complete, 8},
        {"open ones inside each other", "04 02 ac dc 30 80 30 80 00 00", zr::framing::incomplete, 2},
    };
    for (const auto& row : rows) {
        const octets in = bytes(row.in);
        size_t count = 7;
        EXPECT_EQ(zr::envelope_length(in.data(), in.size(), 1000, count), row.answer) << row.what;
        EXPECT_EQ(count, row.count) << row.what;
    }
}

}  // namespace
}  // namespace zr_test
