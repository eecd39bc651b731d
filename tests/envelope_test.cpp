// The envelope, its versions, and the value objects and functions that fields go through.
#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

#include "asn1/asnutils.h"
#include "asn1/zrasnapi.h"
#include "asn1/zrasnbase.h"
#include "support/ber.h"
#include "support/out_of_memory.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

TEST(envelope, saving) {
    zr_asn_integer number(zr_normal);
    number.set_value(5L);
    for (const int version : {2, 258, -254}) {
        zr_asn_buffer_t out{77, nullptr};
        ASSERT_EQ(zr_asnbase::saveEncoding(number, version, out), 0);
        EXPECT_EQ(hex(out.data, out.length), "04 02 ac dc 02 01 05");
        zr_asn_buffer_free(out);
    }
    // A failure leaves what was there.
    unsigned char before = 1;
    zr_asn_buffer_t out{77, &before};
    zr_asn_integer absent(zr_normal);
    EXPECT_EQ(zr_asnbase::saveEncoding(absent, 2, out), zr_err_value_absent);
    EXPECT_EQ(out.length, 77u);
    EXPECT_EQ(out.data, &before);
    const std::vector<unsigned char> many(2000);
    const size_t failures = fail_each_allocation([&](auto&& failing) {
        zr_asn_octetstring text(zr_normal);
        std::string what;
        const bool failed = 0 != failing([&] {
                                what = thrown([&] {
                                    text.set_value(many.data(), 2000);
                                    EXPECT_EQ(zr_asnbase::saveEncoding(text, 2, out), 0);
                                });
                            });
        EXPECT_EQ(what.rfind("memory ", 0) == 0, failed);
        EXPECT_EQ(out.data == &before, failed);
        if (!failed) std::free(out.data);
    });
    EXPECT_GT(failures, 1u);
}

TEST(envelope, loading) {
    // clang-format off
    static const struct {
        const char* octets;
        int version, status;
        long value;  // 7 when the object is untouched
        int flag;    // of get_encoded_version
    } table[] = {
        {"04 02 ac dc 02 01 05", 2, 0, 5, 0}, {"04 02 ac dc 02 01 05", 258, 0, 5, 0},
        {"04 02 ac dc 02 01 05 99 99", 2, 0, 5, 0},  // what follows the object is not looked at
        {"04 02 ac dc 02 01 05", 1, zr_err_bad_envelope, 7, 0}, {"04 00 ac dc 05 00", 0, zr_err_no_match, -1, 1},
        {"04 07 ac dc 05 00", 2, zr_err_bad_envelope, 7, 0}, {"04 02 ac dc", 2, zr_err_bad_envelope, 7, 1},
        {"04 02 ac", 2, zr_err_bad_envelope, 7, 1}, {"", 2, zr_err_bad_envelope, 7, 1},
        {"04 02 ad dc 02 01 05", 2, zr_err_bad_envelope, 7, 1},
        {"04 02 ac dd 02 01 05", 2, zr_err_bad_envelope, 7, 1},
        {"00 02 ac dc 02 01 05", 2, zr_err_bad_envelope, 7, 0},
        {"05 02 ac dc ff 02 01 05", 2, 0, 5, 0},  // a longer header
        {"01 02 ac dc 02 01 05", 2, zr_err_data_ends_early, -1, 0},  // its own octets: 02 ac, a length of 44
        {"05 02 ac dc ff", 2, zr_err_data_ends_early, -1, 0},  // nothing behind it
        {"06 02 ac dc ff", 2, zr_err_bad_envelope, 7, 0}, {"ff 02 ac dc 02 01 05", 2, zr_err_bad_envelope, 7, 0},
        {"04 02 ac dc 02 02 05", 2, zr_err_data_ends_early, -1, 0}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        auto octets = bytes(row.octets);
        octets.shrink_to_fit();  // a sanitizer sees what is read beyond
        zr_asn_buffer_t in{static_cast<unsigned int>(octets.size()), octets.data()};
        zr_asn_integer number(zr_normal);
        number.set_value(7L);
        EXPECT_EQ(zr_asnbase::loadObject(number, row.version, in), row.status);
        long value = -1;
        static_cast<void>(number.get_value(value));
        EXPECT_EQ(value, row.value);
        unsigned int flag = 77;
        EXPECT_EQ(zr_asnbase::get_encoded_version(in, flag), row.flag == 0 ? 0 : zr_err_bad_envelope);
        EXPECT_EQ(flag, static_cast<unsigned int>(row.flag));
        EXPECT_EQ(octets, bytes(row.octets));
    }
    zr_asn_buffer_t nothing{7, nullptr};
    zr_asn_integer number(zr_normal);
    unsigned int flag = 77;
    EXPECT_EQ(zr_asnbase::loadObject(number, 2, nothing), zr_err_bad_envelope);
    EXPECT_EQ(zr_asnbase::get_encoded_version(nothing, flag), zr_err_bad_envelope);
    EXPECT_EQ(flag, 1u);
}

TEST(envelope, bases) {
    zr_asnbase base(zr_normal);
    EXPECT_STREQ(base.get_type_name(), "SEQUENCE");
    EXPECT_EQ(base.set_default_value(), 0);
    EXPECT_EQ(base.is_defaultable(), 1);
    EXPECT_EQ(written(base), "");

    auto* standard = new zr_asnbase(zr_normal);
    EXPECT_EQ(base.set_default_value(standard), 0);
    EXPECT_EQ(base.get_default_value(), standard);
    zrasn_integer number(zr_normal);
    auto* five = new zr_asn_integer(zr_normal);
    five->set_value(5);
    EXPECT_EQ(number.set_default_value(five), 0);
    EXPECT_EQ(number.get_default_value(), five);

    struct third_version : zr_v37_asnbase {
        explicit third_version(security_t mode) : zr_v37_asnbase(mode) { register_child(&own); }
        zr_asn_boolean own{zr_normal};
    } record(zr_normal);
    record.own.set_value(1);
    EXPECT_EQ(written(record), "30 06 02 01 01 01 01 ff");
    EXPECT_EQ(read(record, "30 06 02 01 09 01 01 00"), 0);  // the number is not compared
    EXPECT_EQ(written(record), "30 06 02 01 09 01 01 00");
    EXPECT_EQ(read(record, "30 03 01 01 00"), zr_err_no_match);
}

TEST(values, integers_of_every_width) {
    // clang-format off
    static const struct { const char* octets; long value; unsigned long u32; unsigned short u16; unsigned char u8; }
    table[] = {
        {"02 02 01 2c", 300, 300, 300, 44}, {"02 01 ff", -1, 0xFFFFFFFF, 0xFFFF, 0xFF},
        {"02 05 00 ff ff ff ff", -1, 0xFFFFFFFF, 0xFFFF, 0xFF},
        {"02 04 80 00 00 00", -0x7FFFFFFF - 1, 0x80000000, 0, 0},
        {"02 05 01 00 00 00 00", 0, 0, 0, 0}  // does not fit
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(row.octets);
        zrasn_integer number(zr_normal);
        ASSERT_EQ(read(number, row.octets), 0);
        const auto get = [&](auto value) {
            EXPECT_EQ(number.get_value(value), 0);
            return value;
        };
        EXPECT_EQ(get(77L), row.value);
        EXPECT_EQ(get(77UL), row.u32);
        EXPECT_EQ(get(77), row.value);
        EXPECT_EQ(get(77U), row.u32);
        EXPECT_EQ(get(static_cast<unsigned short>(77)), row.u16);
        EXPECT_EQ(get(static_cast<unsigned char>(77)), row.u8);
        EXPECT_EQ(zr_intvalue(number), row.value);
    }
    zrasn_integer absent(zr_normal);
    long value = 77;
    EXPECT_EQ(absent.get_value(value), 0);
    EXPECT_EQ(value, 0);
    absent.set_default_value(3L);
    EXPECT_EQ(zr_intvalue(absent), 3);
    EXPECT_EQ(absent.set_default_value(), 0);
    EXPECT_EQ(zr_intvalue(absent), 0);
    EXPECT_EQ(written(absent), "");
}

TEST(values, texts_in_octet_strings) {
    char abc[] = "abc", empty[] = "";
    zrasn_octetstring object(zr_normal);
    const auto check_text = [&object](const char* expected) {
        char* text = nullptr;
        unsigned char* same = nullptr;
        EXPECT_EQ(object.get_value(text), 0);
        unsigned char* octets = nullptr;
        EXPECT_EQ(object.get_value(octets), 0);
        EXPECT_STREQ(reinterpret_cast<char*>(octets), text);
        std::free(octets);
        EXPECT_EQ(zr_get_strvalue(object, same), 0);
        EXPECT_STREQ(text, expected);
        EXPECT_STREQ(reinterpret_cast<char*>(same), expected);
        std::free(text);
        std::free(same);
    };
    check_text("");  // absent
    for (const auto& [stored, text] :
         {std::pair{"", ""}, std::pair{"41", ""}, std::pair{"00", ""}, std::pair{"41 42", "AB"},
          std::pair{"61 62 63 00", "abc"}, std::pair{"41 00 42", "A"}}) {
        SCOPED_TRACE(stored);
        const auto octets = bytes(stored);
        object.set_value(octets.data(), static_cast<unsigned int>(octets.size()));
        check_text(text);
    }
    const auto after = [&object](int status) { return status != 0 ? std::to_string(status) : contents(object); };
    EXPECT_EQ(after(object.set_value(abc)), "61 62 63 00");
    EXPECT_EQ(after(object.set_value(empty)), "00");
    EXPECT_EQ(after(zr_set_strvalue(object, reinterpret_cast<unsigned char*>(abc))), "61 62 63 00");
    EXPECT_EQ(after(object.set_value(static_cast<unsigned char*>(nullptr))), "00");
    EXPECT_EQ(after(object.set_value(static_cast<unsigned char>('x'))), "78 00");
    EXPECT_EQ(after(object.set_value(static_cast<unsigned char>(0))), "00");
    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(after(object.set_default_value()), "00");

    object.set_value(abc);
    allocations watch;
    watch.fail_allocation(1);
    char* text = abc;
    EXPECT_EQ(thrown([&] { static_cast<void>(zr_get_strvalue(object, text)); }),
              "memory 275062885: Out of memory get_strvalue() in src/asn1/asnutils");
    EXPECT_EQ(text, nullptr);
}

TEST(values, blocks_in_octet_strings) {
    zrasn_octetstring object(zr_normal), absent(zr_normal), none(zr_normal);
    const unsigned char octets[] = {9, 0, 7};
    object.set_value(octets, 3);
    none.set_value(nullptr, 0);
    for (const zrasn_octetstring* from : {&object, &absent, &none}) {
        const unsigned long stored = from == &object ? 3 : 0;
        unsigned char* data = nullptr;
        unsigned long length = 77;
        EXPECT_EQ(from->get_value(data, length), 0);
        EXPECT_EQ(length, stored);
        EXPECT_EQ(hex(data, length), stored != 0 ? "09 00 07" : "");
        std::free(data);
        for (const unsigned long count : {0ul, 2ul, 3ul, 6ul}) {
            std::vector<unsigned char> dest(7, 1), expected(7, 1);
            for (unsigned long i = 0; i < count; ++i)
                expected[i] = i < stored ? octets[i] : static_cast<unsigned char>(0);
            EXPECT_EQ(from->get_value(count, dest.data()), 0);
            EXPECT_EQ(dest, expected);
        }
        unsigned char first = 77;
        EXPECT_EQ(from->get_value(first), 0);
        EXPECT_EQ(first, stored != 0 ? 9 : 0);
    }
    allocations watch;
    watch.fail_allocation(1);
    unsigned char other = 0;
    unsigned char* data = &other;
    unsigned long length = 77;
    EXPECT_EQ(object.get_value(data, length), zr_err_out_of_memory);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0u);
}

TEST(values, lists_of_strings_are_freed) {
    for (const int count : {-1, 0, 3}) {
        allocations watch;
        auto** strings = static_cast<char**>(std::calloc(3, sizeof(char*)));
        for (const int used : {0, 2})
            if (count > 0) strings[used] = static_cast<char*>(std::malloc(4));
        zr_free_strings(count, strings);
        zr_free_strings(count, nullptr);
        EXPECT_EQ(watch.live(), 0u);
    }
}

}  // namespace
}  // namespace zr_test
