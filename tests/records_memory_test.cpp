// Records when memory is out: whichever allocation fails, a status and one line say so and nothing is lost.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "asn1/record/operations.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/out_of_memory.h"
#include "support/routes.h"

namespace zr_test {
namespace {

constexpr route all_routes[] = {entry_points, object_tree, local_entry_points};

// Whether `printed` is the one line about a failed allocation, in the runtime or in a schema module.
bool is_memory_line(const std::string& printed) {
    char what[200], file[100];
    int line = 0, end = 0;
    constexpr char form[] = "Exception: %199[^[][10652065] in %99s at line %d%n";
    if (std::sscanf(printed.c_str(), form, what, file, &line, &end) != 3) return false;
    std::string files = " src/asn1/asnbase src/asn1/asnbase.h src/zrz/zrz src/asn1/asnutils src/asn1/asn_yvobjs ";
    for (const zr::record_module* module : zr::modules())
        files += std::string(module->name) + " ";
    return printed.substr(static_cast<size_t>(end)) == "\n" && files.find(" " + std::string(file) + " ") != files.npos;
}

// Calls check(original) with one random structure of each record.
void each_record(unsigned int seed, void (*check)(structure& original)) {
    std::mt19937 random(seed);
    for (const zr::record_type* type : all_records()) {
        structure original(*type);
        fill(*type, original.get(), random, {400, 4, true});
        SCOPED_TRACE(type->name);
        check(original);
        if (testing::Test::HasFatalFailure()) return;
    }
}

// What failed says so by its message: an optional record has one of its own.
TEST(records_out_of_memory, messages_of_decoding) {
    const struct {
        const char *record, *in, *message;
    } rows[] = {
        {"yvprincipal_s_t", "30 0a 02 01 01 02 01 02 30 02 30 00", "ASN: Out of memory"},
        {"yvprincipal_s_t", "30 80 02 01 01 02 01 02 30 80 30 80 00 00 00 00 00 00", "ASN: Out of memory"},
        {"yvprincipal_chain_s_t", "30 0c 0c 00 30 08 30 06 02 01 01 02 01 02", "ASN: Memory error"},
        {"yvprincipal_chain_s_t", "30 80 0c 00 30 80 30 80 02 01 01 02 01 02 00 00 00 00 00 00", "ASN: Memory error"},
    };
    for (const auto& row : rows) {
        for (const route& way : {entry_points, local_entry_points}) {
            SCOPED_TRACE(row.in + std::string(", ") + way.name);
            const zr::record_type& type = *zr::find_record(row.record);
            envelope octets(bytes(row.in));
            zr_asn_buffer_t in = octets.buffer();
            size_t found = 0;
            fail_each_allocation([&](auto&& failing) {
                structure out(type);
                caught_stderr printed;
                failing([&] { static_cast<void>(way.decode(type, in, out.get())); });
                const std::string line = printed.take();
                if (const size_t end = line.find(" [10652065] in principal_asn "); end != line.npos) {
                    ASSERT_EQ(line.substr(0, end), std::string("Exception: ") + row.message);
                    ++found;
                }
                ASSERT_EQ(leftover_of_free(out), "");
            });
            EXPECT_GT(found, 0u);
        }
    }
}

TEST(records_out_of_memory, encoding) {
    each_record(21, [](structure& original) {
        for (const route& way : all_routes) {
            SCOPED_TRACE(way.name);
            const size_t failures = fail_each_allocation(
                [&](auto&& failing) {
                    unsigned char untouched = 0;
                    zr_asn_buffer_t out{7, &untouched};
                    int status = 0;
                    caught_stderr printed;
                    if (!failing([&] { status = way.encode(original.type(), out, original.get()); })) {
                        ASSERT_EQ(status, 0);
                        return zr_asn_buffer_free(out);
                    }
                    ASSERT_EQ(status, zr_err_out_of_memory);
                    ASSERT_TRUE(out.length == 7 && out.data == &untouched);
                    const std::string line = printed.take();
                    ASSERT_TRUE(is_memory_line(line)) << line;
                },
                true);
            ASSERT_GT(failures, 0u);
        }
    });
}

// Whether every octet of the structure is `octet`.
bool consists_of(structure& filled, unsigned char octet) {
    const auto* octets = static_cast<const unsigned char*>(filled.get());
    return std::all_of(octets, octets + filled.type().size, [octet](unsigned char each) { return each == octet; });
}

// A text that finds no memory is null, and that is no failure: gives it the text that it should have.
size_t complete_texts(structure& original, structure& copy) {
    const std::vector<char**> expected = texts_of(original.type(), original.get());
    const std::vector<char**> found = texts_of(copy.type(), copy.get());
    size_t missing = 0;
    for (size_t i = 0; i < found.size() && i < expected.size(); ++i) {
        if (*found[i] != nullptr) continue;
        ++missing;
        *found[i] = copy_text(*expected[i] != nullptr ? *expected[i] : "");
    }
    return missing;
}

TEST(records_out_of_memory, decoding) {
    static size_t null_texts = 0;
    static std::mt19937 random(24);
    each_record(22, [](structure& original) {
        const octets plain = encode(entry_points, original).ber;
        envelope forms[] = {envelope(plain), envelope(rewrite_ber(parse_ber(plain), random))};
        for (size_t form = 0; form < 2 * std::size(all_routes); ++form) {
            const route& way = all_routes[form / 2];
            envelope& in = forms[form % 2];
            SCOPED_TRACE(way.name);
            structure copy(original.type());
            fail_each_allocation(
                [&](auto&& failing) {
                    zr_asn_buffer_t buffer = in.buffer();
                    // What the caller's structure held is nothing that a failed decode may leave there.
                    std::memset(copy.get(), 0x5A, original.type().size);
                    int status = 0;
                    caught_stderr printed;
                    const size_t failed = failing([&] { status = way.decode(original.type(), buffer, copy.get()); });
                    const std::string line = printed.take();
                    if (status != 0) {
                        ASSERT_TRUE(failed != 0 && status == zr_err_out_of_memory && is_memory_line(line))
                            << status << line;
                        ASSERT_TRUE(consists_of(copy, 0));
                    } else {
                        const size_t missing = complete_texts(original, copy);
                        null_texts += missing;
                        ASSERT_TRUE(missing <= failed && line.empty()) << missing << line;
                        ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "");
                    }
                    ASSERT_EQ(leftover_of_free(copy), "");
                },
                true);
        }
    });
    EXPECT_GT(null_texts, 100u);
}

TEST(records_out_of_memory, copying) {
    each_record(25, [](structure& original) {
        const zr::record_type& type = original.type();
        structure copy(type);
        fail_each_allocation(
            [&](auto&& failing) {
                std::memset(copy.get(), 0x5A, type.size);
                int status = 0;
                caught_stderr printed;
                const bool failed = 0 != failing([&] { status = zr::copy_record(type, original.get(), copy.get()); });
                ASSERT_EQ(status, failed ? zr_err_out_of_memory : 0);
                ASSERT_EQ(is_memory_line(printed.take()), failed);
                ASSERT_TRUE(failed ? consists_of(copy, 0) : difference(type, original.get(), copy.get()).empty());
                ASSERT_EQ(leftover_of_free(copy), "");
            },
            true);
    });
}

// Octets in segments of segments: without memory for them nothing is read, while a text without it is missing.
TEST(records_out_of_memory, octets_in_segments) {
    const zr::record_type& type = *zr::find_record("value_s_t");
    const octets ber = bytes("30 0f 02 01 05 0c 00 24 08 24 06 04 01 41 04 01 42");
    envelope in(ber);
    std::string statuses;
    statuses.reserve(100);
    fail_each_allocation([&](auto&& failing) {
        caught_stderr printed;
        structure out(type);
        zr_asn_buffer_t buffer = in.buffer();
        int status = 0;
        failing([&] { status = entry_points.decode(type, buffer, out.get()); });
        statuses += std::to_string(status) + " ";
    });
    EXPECT_EQ(statuses, "0 275062885 275062885 275062885 0 ");  // the last one with memory enough
}

// The process's locale is "C", which knows ASCII only: a text with any other octet cannot be converted.
TEST(records_failed_decode, structure_is_zero_after_a_text_that_cannot_be_converted) {
    std::mt19937 random(23);
    size_t records_with_texts = 0;
    for (const zr::record_type* type : all_records()) {
        structure original(*type), copy(*type);
        fill(*type, original.get(), random, {400, 4, true});
        std::vector<char**> texts = texts_of(*type, original.get());
        if (texts.empty()) continue;
        ++records_with_texts;
        std::free(*texts.back());
        *texts.back() = copy_text("B\xC3\xBCro");
        const octets ber = encode(entry_points, original).ber;
        const octets cut(ber.begin(), ber.end() - 1);
        allocations watched;
        caught_stderr printed;
        std::memset(copy.get(), 0x5A, type->size);
        EXPECT_EQ(decode(local_entry_points, ber, copy), zr_err_conversion) << type->name;
        EXPECT_TRUE(consists_of(copy, 0)) << type->name;
        EXPECT_EQ(watched.live(), 0u) << type->name;
        EXPECT_NE(printed.take().find(" [106521ab] in "), std::string::npos) << type->name;

        // Octets that are refused leave the structure as it was, although a text before them was read.
        std::memset(copy.get(), 0x5A, type->size);
        for (const route& way : all_routes)
            EXPECT_EQ(decode(way, cut, copy), zr_err_data_ends_early) << type->name << " " << way.name;
        EXPECT_TRUE(consists_of(copy, 0x5A)) << type->name;
        std::memset(copy.get(), 0, type->size);
        EXPECT_EQ(watched.live(), 0u) << type->name;
    }
    EXPECT_GT(records_with_texts, 40u);
}

}  // namespace
}  // namespace zr_test
