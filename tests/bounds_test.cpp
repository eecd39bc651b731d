// How much memory octets and structures can make the entry points take: 32 times the input and 64 KiB for decoding,
// twice the result, 64 KiB and a little for each open level for encoding, whatever the octets are.
#include <gtest/gtest.h>

#include "base_idls/namevalue_asn.h"
#include "support/allocations.h"
#include "support/caught_stderr.h"
#include "support/hex.h"
#include "support/routes.h"
#include "support/thinned.h"
#include "support/thread_locale.h"
#include "zrasn/decode.h"

namespace zr_test {
namespace {

constexpr size_t fixed_part = 65536;

// How lengths are given.
enum class form { definite, indefinite, unterminated };

octets constructed(octets contents, form lengths) {
    if (lengths == form::definite) return element(0x30, contents);
    octets all = octets{0x30, 0x80} + contents;
    return lengths == form::indefinite ? all + octets{0, 0} : all;
}

// The shortest encoding of a record that is accepted, `optional` ones in it or not; `many` of them in field `crowded`.
octets smallest(const zr::record_type& type, bool optional, form lengths, const zr::field* crowded = nullptr,
                const octets& many = {}) {
    octets all;
    for (const zr::field& field : type) {
        const bool is_record = field.value == zr::value_kind::record;
        if (&field == crowded) {
            all = all + constructed(many, lengths);
        } else if (is_list(field.held) || field.held == zr::holding::slots) {
            all = all + octets{0x30, 0};
        } else if (field.held == zr::holding::optional && !(optional && is_record)) {
            continue;
        } else if (is_record) {
            all = all + smallest(*field.record, optional, form::definite);
        } else {
            const bool number = field.value == zr::value_kind::integer || field.value == zr::value_kind::version;
            const auto tag = static_cast<unsigned char>(number                                ? 0x02
                                                        : field.value == zr::value_kind::text ? 0x0C
                                                                                              : 0x04);
            all = all + octets{tag, 0};
        }
    }
    return constructed(all, lengths);
}

octets times(size_t count, const octets& part) {
    octets all;
    all.reserve(count * part.size());
    for (; count != 0; --count)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// Decodes on every way, in a locale that converts texts, and checks what each takes.
void check_decoding(const zr::record_type& type, const octets& ber, const char* what) {
    SCOPED_TRACE(std::string(type.name) + ", " + what);
    const octets whole = envelope(ber).all();
    const zr_asn_buffer_t in{static_cast<unsigned int>(whole.size()), const_cast<unsigned char*>(whole.data())};
    const size_t most = 32 * whole.size() + fixed_part;
    caught_stderr printed;
    const auto measure = [&](const char* way, auto&& decode) {
        structure out(type);
        allocations watched;
        decode(out.get());
        EXPECT_LE(watched.peak(), most) << way << ", " << whole.size() << " octets";
        type.free(out.get());
        EXPECT_EQ(watched.live(), 0u);
    };
    measure("plain", [&](void* out) { static_cast<void>(type.decode(in, out)); });
    measure("LCS", [&](void* out) { static_cast<void>(type.decode_lcs(in, out)); });
    for (const bool strict : {false, true}) {
        zr::decode_options options;
        options.strict = strict;
        options.limits.elements = whole.size() / 3;
        zr::decode_report report;
        measure("one call",
                [&](void* out) { static_cast<void>(type.decode(whole.data(), whole.size(), out, options, report)); });
        options.limits = {};
        measure("packed", [&](void* out) {
            zr::packed_blocks blocks;
            static_cast<void>(type.decode_packed(whole.data(), whole.size(), out, blocks, options, report));
            std::memset(out, 0, type.size);
        });
    }
}

TEST(bounds, the_smallest_elements_of_every_list) {
    const thread_locale in_use("latin1");
    for (const zr::record_type* type : all_records()) {
        for (const zr::field& field : *type) {
            if (!is_list(field.held) && field.held != zr::holding::slots) continue;
            for (const bool optional : {false, true}) {
                for (const form lengths : {form::definite, form::indefinite, form::unterminated}) {
                    const form inner = lengths == form::unterminated ? form::definite : lengths;
                    octets one = field.value == zr::value_kind::text ? octets{0x0C, 0} : octets{0x02, 0};
                    if (field.value == zr::value_kind::record) one = smallest(*field.record, optional, inner);
                    if (optional && one[0] != 0x30) one = octets{one[0], 1, 0x41};
                    for (const size_t size : {size_t{3000}, 150000 / one_in(5)})
                        check_decoding(*type, smallest(*type, optional, lengths, &field, times(size / one.size(), one)),
                                       field.name);
                }
            }
        }
    }
}

TEST(bounds, records_in_themselves) {
    const thread_locale in_use("latin1");
    std::string names;
    for (const zr::record_type* type : all_records()) {
        if (!type->contains_itself()) continue;
        names += type->name + std::string(" ");
        const zr::field& list = *(type->end() - 1);
        for (const form lengths : {form::definite, form::indefinite, form::unterminated}) {
            for (const size_t wide : {size_t{0}, size_t{4}}) {  // other elements beside each one that goes on
                octets chain;
                const octets beside = times(wide, smallest(*type, false, form::definite));
                if (lengths == form::definite) {
                    for (size_t level = 0; level < 3000; ++level)
                        chain = smallest(*type, false, lengths, &list, beside + chain);
                } else {
                    octets head = smallest(*type, false, form::unterminated, &list, beside);
                    chain = times(6000, head);
                    if (lengths == form::indefinite) chain = chain + octets(4 * 6000);
                }
                check_decoding(*type, chain, "chain");
                // Texts that have to be converted, and a fault at the end.
                for (size_t i = 0; i + 1 < chain.size(); ++i)
                    if (chain[i] == 0x0C && chain[i + 1] == 0) chain[i] = 0x2C;
                check_decoding(*type, chain, "segments");
                chain.back() = 7;
                check_decoding(*type, chain, "refused at the end");
            }
        }
    }
    EXPECT_EQ(names, "namevalue_s_t ejauditelement_s_t ");
}

TEST(bounds, texts_that_are_converted) {
    const thread_locale in_use("latin1");
    const zr::record_type& type = *zr::find_record("yvobj_name_list_s_t");
    for (const octets& text : {octets{0xC3, 0xA9}, octets(3000, 0xC3)}) {
        octets contents = text;
        for (size_t i = 1; i < contents.size(); i += 2)
            contents[i] = 0xA9;
        check_decoding(type,
                       smallest(type, false, form::definite, type.begin(),
                                times(60000 / (text.size() + 2), element(0x0C, contents))),
                       "texts");
    }
}

// Shapes that have harmed decoders, each as the octets of a record and the status that refuses it, or 0: wide
// integers lose their high octets, and what follows a record is left to the caller.
TEST(bounds, shapes_of_attacks) {
    const thread_locale in_use("latin1");
    const octets text{0x0C, 0};
    const octets data{0x04, 0};
    const auto value = [&](const octets& type) { return element(0x30, type + text + data); };
    const auto value_with = [&](const octets& last) { return element(0x30, octets{0x02, 1, 5} + text + last); };
    const auto nested = [](size_t depth, octets head, const octets& tail) {
        return times(depth, head) + times(tail.empty() ? 0 : depth, tail);
    };
    const struct {
        const char* name;
        octets ber;
        int status;
    } rows[] = {
        {"a header that goes on behind the octets", {0x30, 0x80, 0x1F, 0xFF, 0xFF, 0xFF}, zr_err_data_ends_early},
        {"a length of which one octet is missing", {0x30, 0x84, 0, 0, 0}, zr_err_data_ends_early},
        {"contents behind the octets", {0x30, 10, 0x02, 1, 5}, zr_err_data_ends_early},
        {"a length of 2^32 - 1", octets{0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF} + value({2, 1, 5}), zr_err_data_ends_early},
        {"a length of 2^31", octets{0x30, 0x84, 0x80, 0, 0, 0} + value({2, 1, 5}), zr_err_data_ends_early},
        {"a length of 2^32 and 1 within", value({0x02, 0x85, 1, 0, 0, 0, 1, 5}), 0},
        {"a length of 2^64 and 1 within", value({0x02, 0x89, 1, 0, 0, 0, 0, 0, 0, 0, 1, 5}), 0},
        {"a text of 2^32 - 1", element(0x30, octets{2, 1, 5, 0x0C, 0x84, 0xFF, 0xFF, 0xFF, 0xFF} + data),
         zr_err_data_ends_early},
        {"octets of 2^32 - 6", value_with({0x04, 0x84, 0xFF, 0xFF, 0xFF, 0xFA}), zr_err_data_ends_early},
        {"a tag that folds to that of a SEQUENCE",
         octets{0x3F, 0x80, 0x80, 0x80, 0x80, 0x90, 0x05, 7, 2, 1, 5} + text + data, zr_err_data_ends_early},
        {"a tag of 2^32 and 2 within", value({0x1F, 0x90, 0x80, 0x80, 0x80, 0x02, 1, 5}), zr_err_no_match},
        {"a long tag for a small number within", value({0x1F, 0x02, 1, 5}), zr_err_no_match},
        {"segments in segments",
         octets{0x30, 0x80, 2, 1, 5, 0x0C, 0} + nested(20000, {0x24, 0x80}, {0, 0}) + octets{0, 0}, 0},
        {"segments in segments without an end", octets{0x30, 0x80, 2, 1, 5, 0x0C, 0} + nested(20000, {0x24, 0x80}, {}),
         zr_err_data_ends_early},
        {"texts in texts", octets{0x30, 0x80, 2, 1, 5} + nested(20000, {0x2C, 0x80}, {0, 0}) + octets{4, 0, 0, 0},
         zr_err_no_match},
        {"empty segments", octets{0x30, 0x80, 2, 1, 5, 0x0C, 0, 0x24, 0x80} + times(20000, {4, 0}) + octets(4), 0},
        {"a missing end", octets{0x30, 0x80, 2, 1, 5} + text + data, zr_err_bad_contents},
        {"half an end", octets{0x30, 0x80, 2, 1, 5} + text + data + octets{0}, zr_err_bad_contents},
        {"an end in a definite length", element(0x30, octets{2, 1, 5} + text + data + octets{0, 0}),
         zr_err_trailing_data},
        {"an end for a member", element(0x30, octets{2, 1, 5, 0, 0} + data), zr_err_no_match},
        {"an end with contents", octets{0x30, 0x80, 2, 1, 5} + text + data + octets{0, 1, 0}, zr_err_bad_contents},
        {"an end too many", octets{0x30, 0x80, 2, 1, 5} + text + data + octets(4), 0},
        {"nothing but ends", octets(3000), zr_err_no_match},
        {"an end with contents of segments", value_with({0x24, 0x80, 4, 1, 0x41, 0, 1}) + octets{0}, zr_err_no_match},
        {"an INTEGER of no octets", value({2, 0}), 0},
        {"an INTEGER of four octets", value({2, 4, 0xFF, 0xFF, 0xFF, 0xFF}), 0},
        {"an INTEGER of five octets", value({2, 5, 1, 0, 0, 0, 5}), 0},
        {"an INTEGER of nine octets", value({2, 9, 1, 0, 0, 0, 0, 0, 0, 0, 5}), 0},
        {"an INTEGER of 70,000 octets", value(element(2, octets(70000, 0xFF))), 0},
        {"an INTEGER in segments", value({0x22, 3, 2, 1, 5}), zr_err_constructed_form},
        {"a BIT STRING of no octets", value_with({0x03, 0}), zr_err_no_match},
        {"a BIT STRING with unused bits of none", value_with({0x03, 1, 7}), zr_err_no_match},
        {"octets behind the record", value({2, 1, 5}) + octets(3000, 0x30), 0},
        {"a record for a member", value({0x30, 0}), zr_err_no_match},
        {"members in a wrong order", element(0x30, data + text + octets{2, 1, 5}), zr_err_no_match},
        {"a member too many", element(0x30, octets{2, 1, 5} + text + data + data), zr_err_trailing_data},
    };
    const zr::record_type& type = *zr::find_record("value_s_t");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        caught_stderr printed;
        for (const route& way : {entry_points, object_tree, local_entry_points}) {
            structure out(type);
            EXPECT_EQ(decode(way, row.ber, out), row.status) << way.name;
        }
        check_decoding(type, row.ber, row.name);
    }
}

TEST(bounds, encoding) {
    const thread_locale in_use("latin1");
    std::mt19937 random(61);
    for (const zr::record_type* type : all_records()) {
        for (const size_t size : {size_t{300}, size_t{30000}, size_t{300000}}) {
            structure original(*type);
            fill(*type, original.get(), random, {size, 6, true});
            for (char** text : texts_of(*type, original.get()))
                if (*text != nullptr && **text != 0 && random() % 2 == 0) **text = '\xE9';
            for (const route& way : {entry_points, local_entry_points}) {
                zr_asn_buffer_t out{};
                allocations watched;
                ASSERT_EQ(way.encode(*type, out, original.get()), 0);
                // Half of the texts are converted: twice their octets are less than twice the result.
                EXPECT_LE(watched.peak(), (&way == &entry_points ? 2 : 4) * size_t{out.length} + 48 * 6 + fixed_part)
                    << type->name << " " << way.name;
                zr_asn_buffer_free(out);
            }
        }
    }
    // One text of one letter to convert in each record of a list, and a guess that is wrong by far.
    structure names(*zr::find_record("yvobj_name_list_s_t"));
    const zr::record_type& type = names.type();
    const octets ber = smallest(type, false, form::definite, type.begin(), times(100000, octets{0x0C, 1, 0x41}));
    ASSERT_EQ(decode(entry_points, ber, names), 0);
    for (char** text : texts_of(type, names.get()))
        **text = '\xE9';
    zr_asn_buffer_t out{};
    allocations watched;
    ASSERT_EQ(type.encode_lcs(out, names.get()), 0);
    EXPECT_LE(watched.peak(), 2 * size_t{out.length} + 2 * 200000 + fixed_part);
    zr_asn_buffer_free(out);
}

}  // namespace
}  // namespace zr_test
