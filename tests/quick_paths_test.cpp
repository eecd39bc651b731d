// Octets as the library writes them never reach the readers of other forms, on any way, nor are they written again,
// copied into packed blocks, or converted where texts are ASCII; those of indefinite length do not reach the general
// reader of records. The test program is linked so that calls of what does that pass through here
// (--wrap in CMakeLists.txt, by the names that the linker knows).
#include <gtest/gtest.h>

#include "asn1/codec/copy_packed.h"
#include "asn1/codec/definite_form.h"
#include "asn1/codec/encoding.h"
#include "asn1/codec/general_reader.h"
#include "asn1/codec/local_texts.h"
#include "support/allocations.h"
#include "support/hex.h"
#include "support/routes.h"
#include "support/thread_locale.h"
#include "zrasn/decode.h"

namespace {

size_t calls = 0;
size_t any_form_calls = 0;  // of the general reader of records alone
size_t packed_copies = 0;   // of structures that were read in another way

}  // namespace

#define ZR_COUNTED(result, name, symbol, parameters, arguments) \
    result real_##name parameters asm("__real_" symbol);        \
    result wrap_##name parameters asm("__wrap_" symbol);        \
    result wrap_##name parameters {                             \
        ++calls;                                                \
        return real_##name arguments;                           \
    }

ZR_COUNTED(int, any_form, "_ZN2zr13read_any_formERKNS_11record_typeENS_5inputEPvRNS_15general_readingE",
           (const zr::record_type& type, zr::input in, void* out, zr::general_reading& reading),
           (type, in, out, (++any_form_calls, reading)))
ZR_COUNTED(bool, definite_form, "_ZN2zr13definite_form5writeEPKhS2_PKc",
           (zr::definite_form * form, zr::octet_position at, zr::octet_position end, const char* file),
           (form, at, end, file))
ZR_COUNTED(zr::found_contents, odd_contents, "_ZN2zr12odd_contentsEPKhS1_h",
           (zr::octet_position at, zr::octet_position end, unsigned char identifier), (at, end, identifier))
ZR_COUNTED(zr::found_integer, odd_integer, "_ZN2zr11odd_integerEPKhS1_",
           (zr::octet_position at, zr::octet_position end), (at, end))
ZR_COUNTED(void, encoding, "_ZN2zr14write_encodingERKNS_11record_typeEPKviRNS_15encoding_targetE",
           (const zr::record_type& type, const void* in, int version, zr::encoding_target& target),
           (type, in, version, target))
ZR_COUNTED(void, copy_packed, "_ZN2zr11copy_packedERKNS_11record_typeEPKvPvRNS_13packed_blocksE",
           (const zr::record_type& type, const void* from, void* to, zr::packed_blocks& blocks),
           (type, from, to, (++packed_copies, blocks)))
#if __SIZEOF_SIZE_T__ == 8
#define ZR_SIZE_T "m"
#else
#define ZR_SIZE_T "j"
#endif
ZR_COUNTED(zr::const_text, conversion, "_ZN2zr15text_conversion7convertEPKc" ZR_SIZE_T,
           (zr::text_conversion * conversion, const char* chars, size_t length), (conversion, chars, length))
ZR_COUNTED(zr::octet_position, odd_fixed_octets, "_ZN2zr16odd_fixed_octetsEPKhS1_Phj",
           (zr::octet_position at, zr::octet_position end, unsigned char* to, uint32_t size), (at, end, to, size))

namespace zr_test {
namespace {

// How often each way called one of them.
std::vector<size_t> calls_of_ways(const zr::record_type& type, octets whole, bool strict = false) {
    const zr_asn_buffer_t in{static_cast<unsigned int>(whole.size()), whole.data()};
    std::vector<size_t> counts;
    const auto count = [&](auto&& decode) {
        structure out(type);
        calls = 0;
        EXPECT_EQ(decode(out.get()), 0) << type.name << ": " << hex(whole);
        counts.push_back(calls);
    };
    count([&](void* out) { return type.decode(in, out); });
    count([&](void* out) { return type.decode_lcs(in, out); });
    for (const bool local : {false, true}) {
        zr::decode_options options;
        options.local_texts = local;
        options.strict = strict;
        zr::decode_report report;
        count([&](void* out) { return type.decode(whole.data(), whole.size(), out, options, report); });
        zr::packed_blocks blocks;
        count([&](void* out) {
            const int status = type.decode_packed(whole.data(), whole.size(), out, blocks, options, report);
            std::memset(out, 0, type.size);
            return status;
        });
    }
    return counts;
}

TEST(quick_paths, octets_as_they_are_written_reach_no_other_reader) {
    std::mt19937 random(54);
    for (const char* locale : {"utf8", "latin1"}) {
        const thread_locale in_use(locale);
        for (const zr::record_type* type : all_records()) {
            for (const size_t size : {20, 300, 300, 70000}) {
                structure original(*type);
                fill(*type, original.get(), random, {size, 4, true});
                const octets ber = encode(entry_points, original).ber;
                const octets whole = envelope(ber).all();
                for (const bool strict : {false, true}) {
                    std::vector<size_t> counts = calls_of_ways(*type, whole, strict);
                    ASSERT_LE(counts.back(), 1u);  // what may hold converted texts is copied
                    counts.back() = 0;
                    ASSERT_EQ(counts, std::vector<size_t>(6)) << type->name << ": " << hex(ber);
                }
            }
        }
    }
}

TEST(quick_paths, records_of_indefinite_length_reach_no_general_reader) {
    std::mt19937 random(55);
    for (const char* locale : {"utf8", "latin1"}) {
        const thread_locale in_use(locale);
        for (const zr::record_type* type : all_records()) {
            for (unsigned i = 0; i < 12; ++i) {
                structure original(*type);
                fill(*type, original.get(), random, {i < 10 ? 400u : 30000u, 4, true});
                const ber_value value = parse_ber(encode(entry_points, original).ber);
                const octets ber = rewrite_ber(value, random, {false, true, false, false});
                any_form_calls = 0;
                calls_of_ways(*type, envelope(ber).all());
                ASSERT_EQ(any_form_calls, 0u) << type->name << ": " << hex(ber);
            }
        }
    }
}

// A value in another form costs itself: names "AB" in lists of attributes without values.
TEST(quick_paths, values_in_other_forms_reach_no_general_reader) {
    for (const char* name : {"2c 04 04 02 41 42", "2c 06 04 01 41 04 01 42", "2c 80 04 02 41 42 00 00", "2c 80 00 00",
                             "2c 00", "0c 84 00 00 00 02 41 42", "0c 81 00"}) {
        structure out(*zr::find_record("attrlist_s_t"));
        any_form_calls = 0;
        EXPECT_EQ(decode(entry_points, element(0x30, element(0x30, element(0x30, bytes(name) + bytes("30 00")))), out),
                  0);
        EXPECT_EQ(any_form_calls, 0u) << name;
    }
    octets full;  // as many elements as a count of 16 bits can tell
    structure identity(*zr::find_record("sec_id_t"));
    const octets one = encode(entry_points, identity).ber;
    for (size_t i = 0; i < 65535; ++i)
        full.insert(full.end(), one.begin(), one.end());
    const struct {
        const char* record;
        octets ber;
    } rows[] = {
        {"ejauditattribute_s_t", bytes("30 04 0c 00 24 00")},
        {"ejauditattribute_s_t", bytes("30 0b 0c 00 24 80 04 00 04 01 41 00 00")},
        {"ejauditattribute_s_t", bytes("30 80 2c 80 04 01 41 00 00 24 80 04 01 41 00 00 00 00")},
        {"ejauditattribute_s_t", bytes("30 85 00 00 00 00 04 0c 00 04 00")},
        {"uuid_t", bytes("30 19 02 00 02 00 02 00 02 00 02 00 24 0d 04 01 01 04 00 04 06 02 03 04 05 06 07")},
        {"sec_id_pa_t", element(0x30, one + element(0x30, full))},
    };
    for (const auto& row : rows) {
        const zr::record_type& type = *zr::find_record(row.record);
        const octets whole = envelope(row.ber).all();
        structure out(type), packed(type);
        zr::packed_blocks blocks;
        zr::decode_report report;
        any_form_calls = packed_copies = 0;
        EXPECT_EQ(decode(entry_points, row.ber, out), 0);
        EXPECT_EQ(type.decode_packed(whole.data(), whole.size(), packed.get(), blocks, {}, report), 0);
        EXPECT_EQ(difference(type, out.get(), packed.get()), "");
        std::memset(packed.get(), 0, type.size);
        EXPECT_EQ(any_form_calls + packed_copies, 0u) << row.record << ": " << hex(row.ber).substr(0, 60);
    }
}

// Where texts are converted the parts without any are stepped over, whatever is in them: in the midst of the octets and
// near their end, where they are looked at in other steps.
TEST(quick_paths, values_in_other_forms_beside_texts_that_are_converted) {
    const thread_locale in_use("latin1");
    const octets identity = element(0x30, bytes("30 12 02 00 02 00 02 00 02 00 02 00 24 06 04 04 01 02 03 04") +
                                              element(0x0C, bytes("c3 a9 c3 a9 c3 a9 c3 a9 c3 a9")));
    structure out(*zr::find_record("sec_id_pa_t"));
    any_form_calls = 0;
    EXPECT_EQ(decode(local_entry_points, element(0x30, identity + element(0x30, identity + identity)), out), 0);
    for (char** text : texts_of(out.type(), out.get()))
        EXPECT_STREQ(*text, "\xE9\xE9\xE9\xE9\xE9");
    EXPECT_EQ(any_form_calls, 0u);
}

// What has no indefinite length inside goes into the copy as it is: a copy that has room for the octets takes no more.
TEST(quick_paths, definite_parts_are_copied_as_they_are) {
    const octets attribute = bytes("30 04 0c 00 30 00");
    octets list;
    for (int i = 0; i < 3000; ++i)
        list = std::move(list) + attribute;
    list = element(0x30, list);
    const auto blocks_of = [](const octets& ber) {
        structure out(*zr::find_record("attrlist_s_t"));
        allocations watched;
        EXPECT_EQ(decode(entry_points, ber, out), 0);
        const size_t made = watched.made();
        EXPECT_EQ(leftover_of_free(out), "");
        return made;
    };
    EXPECT_EQ(blocks_of(octets{0x30, 0x80} + list + octets{0, 0}), blocks_of(element(0x30, list)) + 1);
}

// An encoding may have 2^32-1 octets: memory is asked for no more.
TEST(encoding, the_longest) {
    allocations watched;
    for (const uint64_t more : {0, 1}) {
        watched.fail_allocation(1);
        EXPECT_THROW(zr::allocate_encoding(UINT32_MAX + more), zr_asn_memexception);
        EXPECT_EQ(watched.failed(), 1 - more);
    }
}

TEST(quick_paths, other_octets_do) {
    const zr::record_type& type = *zr::find_record("attrlist_s_t");
    for (const char* ber : {"30 80 30 00 00 00", "30 85 00 00 00 00 02 30 00", "30 80 30 80 00 00 00 00"})
        for (const size_t count : calls_of_ways(type, envelope(bytes(ber)).all()))
            EXPECT_GT(count, 0u) << ber;
}

}  // namespace
}  // namespace zr_test
