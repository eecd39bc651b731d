// INTEGER, BOOLEAN, the placeholder and OCTET STRING: values, defaults and caches; and what all types that hold octets
// have to withstand. What is read stands in elements.txt.
#include <gtest/gtest.h>

#include <iterator>
#include <memory>

#include "asn1/asnstrng.h"
#include "support/ber.h"
#include "support/out_of_memory.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

// What get_value gives, or the status behind the value that it leaves alone.
template <class Value = long, class Object>
std::string value_of(const Object& object) {
    Value value = 77;
    const int status = object.get_value(value);
    return std::to_string(value) + (status != 0 ? ", " + std::to_string(status) : "");
}

TEST(integer, values) {
    // clang-format off
    static const struct { int32_t value; const char* octets; } table[] = {
        {0, "02 01 00"}, {-1, "02 01 ff"}, {5, "02 01 05"}, {127, "02 01 7f"}, {128, "02 02 00 80"},
        {-128, "02 01 80"}, {-129, "02 02 ff 7f"}, {255, "02 02 00 ff"}, {256, "02 02 01 00"}, {32767, "02 02 7f ff"},
        {32768, "02 03 00 80 00"}, {-32768, "02 02 80 00"}, {-32769, "02 03 ff 7f ff"}, {0x7FFFFF, "02 03 7f ff ff"},
        {0x800000, "02 04 00 80 00 00"}, {-0x800000, "02 03 80 00 00"}, {-0x800001, "02 04 ff 7f ff ff"},
        {INT32_MAX, "02 04 7f ff ff ff"}, {INT32_MIN, "02 04 80 00 00 00"}
    };
    // clang-format on
    for (const auto& row : table) {
        zr_asn_integer object(zr_normal), back(zr_normal);
        EXPECT_EQ(object.set_value(static_cast<long>(row.value)), 0);
        EXPECT_EQ(object.is_encoding_valid(), 1);
        EXPECT_EQ(written(object), row.octets);
        EXPECT_EQ(value_of(object), std::to_string(row.value));
        EXPECT_EQ(back.set_value(bytes(row.octets).data() + 2, static_cast<unsigned int>(row.octets[4] - '0')), 0);
        EXPECT_EQ(value_of(back), std::to_string(row.value));
        EXPECT_EQ(written(back), row.octets);
        EXPECT_EQ(read(back, row.octets), 0);
        EXPECT_EQ(value_of(back), std::to_string(row.value));
    }
}

TEST(integer, a_long_is_32_bits_wide) {
    zr_asn_integer object(zr_normal);
    for (const uint32_t bits : {0xFFFFFFFFu, 0x80000000u, 0xFFFFFF80u}) {
        EXPECT_EQ(object.set_value(static_cast<long>(bits)), 0);
        EXPECT_EQ(value_of(object), std::to_string(static_cast<int32_t>(bits)));
    }
    EXPECT_EQ(written(object), "02 01 80");
    // What fits neither the signed nor the unsigned 32 bits is refused, where a long can hold it.
    constexpr int64_t wide[] = {0x100000000, -0x80000001LL, INT64_MAX, INT64_MIN, -0x100000000};
    for (size_t i = 0; sizeof(long) == 8 && i < std::size(wide); ++i) {
        EXPECT_EQ(object.set_value(static_cast<long>(wide[i])), zr_err_integer_too_long);
        EXPECT_EQ(object.set_default_value(static_cast<long>(wide[i])), zr_err_integer_too_long);
    }
    EXPECT_EQ(object.is_defaultable(), 0);
    EXPECT_EQ(written(object), "02 01 80");
}

TEST(integer, state) {
    zr_asn_sequence parent(zr_normal);
    zr_asn_integer object(zr_normal);
    parent.register_child(&object);
    EXPECT_EQ(value_of(object), "77, 275063200");
    EXPECT_EQ(contents(object), "275063200");
    object.set_value(5L);
    EXPECT_EQ(written(parent), "30 03 02 01 05");
    object.set_value(6L);  // tells no cache above
    EXPECT_EQ(written(parent), "30 03 02 01 05");
    EXPECT_EQ(written(object), "02 01 06");
    object.set_tag(7);  // and what makes the own cache stale loses the contents
    EXPECT_EQ(written(object), "07 00");
    EXPECT_EQ(value_of(object), "6");

    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(object.set_default_value(9L), 0);
    EXPECT_EQ(object.get_default_value()->get_tag(), 7u);
    EXPECT_EQ(value_of(object), "9");
    EXPECT_EQ(contents(object), "09");
    EXPECT_EQ(object.set_default_value(0) + object.set_default_value(0U) + object.set_default_value(0LL), 0);
    EXPECT_EQ(value_of(object), "0");
    const unsigned char wide[] = {1, 0, 0, 0, 0};
    object.set_default_value(wide, 5);
    EXPECT_EQ(value_of(object), "77, 275063193");
    EXPECT_EQ(contents(object), "01 00 00 00 00");
    object.set_default_value(new zr_asn_boolean(zr_normal));  // a foreign class answers nothing
    EXPECT_EQ(value_of(object), "77, 275063200");

    input octets("02 01");
    unsigned char* at = nullptr;
    EXPECT_TRUE(octets.take(1, at));
    EXPECT_EQ(object.decode_value(octets, 2), zr_err_data_ends_early);
    EXPECT_EQ(octets.consumed(), 1);
    zr_asn_octetstring segments(zr_normal);
    EXPECT_EQ(read(segments, "24 00"), 0);  // the form that was read last counts
    EXPECT_EQ(segments.decode_value(octets, 2), zr_err_data_ends_early);
}

TEST(boolean, default_and_caches) {
    zr_asn_sequence parent(zr_normal);
    zr_asn_boolean object(zr_normal);
    parent.register_child(&object);
    object.set_default_value(1);
    EXPECT_EQ(value_of<int>(object), "1");
    object.set_value(-2);
    EXPECT_EQ(value_of<int>(object), "-2");
    EXPECT_EQ(written(parent), "30 00");  // any TRUE is the default
    object.set_value(0);
    EXPECT_EQ(written(parent), "30 03 01 01 00");  // caches above are told
}

TEST(nothing, takes_no_octets) {
    zr_asn_sequence parent(zr_normal);
    zr_asn_integer number(zr_normal);
    zr_asn_nothing nothing(zr_normal);
    parent.register_child(&nothing);
    parent.register_child(&number);
    EXPECT_EQ(read(parent, "30 03 02 01 05"), 0);
    EXPECT_EQ(written(parent), "30 03 02 01 05");
    EXPECT_EQ(nothing.is_present(), 1);
    EXPECT_EQ(nothing.is_valid(1), 1);
    EXPECT_STREQ(nothing.get_type_name(), "OBJECT");
    zr_buffer_t contents(zr_normal);
    input octets("01 02");
    EXPECT_EQ(nothing.decode_value(octets, 2), 0);
    EXPECT_EQ(octets.remaining(), 2u);
    EXPECT_EQ(nothing.encode_value(contents), 0);
    EXPECT_EQ(hex(contents), "");
}

// A segment whose identifier is counted and not passed (its high tag number wraps to 4) ends its level where the
// length says.
TEST(octetstring, levels_end_where_their_length_says) {
    // Seven octets are counted for the identifier; its first is read again as the length 31.
    for (const size_t count : {7 + 1 + 31, 7 + 1 + 32}) {
        auto octets = bytes("24 00 1f 80 80 80 80 84 00");
        octets[1] = static_cast<unsigned char>(count);
        octets.resize(2 + count, 0x55);
        octets.push_back(0x99);
        zr_asn_octetstring object(zr_normal);
        const auto [status, consumed] = read_from(object, octets);
        EXPECT_EQ(status, count == 39 ? 0 : zr_err_no_match);
        EXPECT_EQ(consumed, count == 39 ? 41 : 0);
    }
}

TEST(octetstring, state) {
    zr_asn_sequence parent(zr_normal);
    zr_asn_octetstring object(zr_normal);
    parent.register_child(&object);
    const unsigned char abc[] = {'a', 'b', 'c'};
    EXPECT_EQ(contents(object), "275063200");
    object.set_default_value(abc, 2);
    EXPECT_EQ(contents(object), "61 62");
    object.set_value(abc, 3);
    EXPECT_EQ(written(parent), "30 05 04 03 61 62 63");
    object.set_value(abc, 2);  // tells no cache above; equal to the default
    EXPECT_EQ(written(parent), "30 05 04 03 61 62 63");
    EXPECT_EQ(written(object), "");
    object.set_default_value(new zr_asn_integer(zr_normal));
    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(contents(object), "275063200");
    object.set_value(nullptr, 0);
    EXPECT_EQ(contents(object), "");
}

// The hidden octet also where the contents fill the block to its end.
TEST(octetstring, the_hidden_octet_has_room) {
    for (unsigned int count : {63u, 64u, 127u, 128u, 1023u, 1024u, 1087u, 1088u}) {
        std::vector<unsigned char> octets = {4, 0x82, static_cast<unsigned char>(count >> 8),
                                             static_cast<unsigned char>(count)};
        octets.resize(4 + count, 'x');
        zr_asn_octetstring object(zr_normal);
        ASSERT_EQ(read_from(object, octets).status, 0);
        unsigned char* data = nullptr;
        unsigned int length = 0;
        ASSERT_EQ(object.get_value(data, length), 0);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(data)), std::string(count, 'x'));
    }
}

TEST(primitive, exhausted_memory_is_an_exception_and_loses_nothing_else) {
    const auto octets = bytes("24 80 04 01 61 24 03 04 01 62 00 00");
    const size_t failures = fail_each_allocation([&](auto&& failing) {
        input cursor(octets);
        zr_asn_octetstring object(zr_secure);
        zr_asn_integer number(zr_normal);
        std::string what;
        const bool failed = 0 != failing([&] {
                                what = thrown([&] {
                                    EXPECT_EQ(object.asnread(cursor), 0);
                                    number.set_default_value(5L);
                                });
                            });
        EXPECT_EQ(what.rfind("memory 275062885: ", 0) == 0, failed) << what;
        EXPECT_TRUE(object.is_present() != 0 || cursor.remaining() == octets.size());
        EXPECT_EQ(number.is_defaultable(), failed ? 0 : 1);
    });
    EXPECT_GT(failures, 3u);
}

// The modes reach every block that held a secret, also when objects are made secure later.
TEST(primitive, secrets_are_wiped) {
    for (const security_t mode : {zr_secure, zr_normal}) {
        const secret_search search({"^^^^"});
        std::string text(300, '^'), longer(2000, '^');
        const auto* secret = reinterpret_cast<const unsigned char*>(text.data());
        {
            // On the heap, where the search sees what objects keep in themselves.
            const auto parent = std::make_unique<zr_asn_sequence>(mode);
            const auto number = std::make_unique<zr_asn_integer>(zr_normal);
            const auto octets = std::make_unique<zr_asn_octetstring>(zr_normal);
            const auto any = std::make_unique<zr_asn_any>(zr_normal);
            const auto bits = std::make_unique<zr_asn_bitstring>(zr_normal);
            const auto named = std::make_unique<zr_asn_namedbits>(zr_normal);
            const auto string = std::make_unique<zr_asn_UTF8String>(zr_normal);
            for (zr_asn_object* each : std::initializer_list<zr_asn_object*>{number.get(), octets.get(), any.get(),
                                                                             bits.get(), named.get(), string.get()})
                parent->register_child(each);
            number->set_value(0x5E5E5E5EL);
            octets->set_value(secret, 300);
            octets->set_default_value(nullptr, 0);
            any->set_value(secret, 300);
            bits->set_value(secret, 2400);
            named->set_value(secret, 2400);
            named->set_bit(9000, 1);
            string->set_value_UTF8(text.data());
            string->set_value_UTF8(longer.data());
            zr_buffer_t output(mode);
            EXPECT_EQ(parent->asnwrite(output), 0);
            octets->set_value(secret, 200);
            octets->empty();
        }
        EXPECT_EQ(search.found() == 0, mode == zr_secure) << search.found();
    }
}

// Calls `check` for each type whose value is octets, in both modes: with an object, how many of its units an octet is,
// and encodings of it, which the tests also take for values.
template <class Check>
void for_octet_types(Check&& check) {
    using encodings = std::vector<const char*>;
    for (const security_t mode : {zr_normal, zr_secure}) {
        SCOPED_TRACE(testing::Message() << "mode " << mode);
        const auto with = [&](auto made, unsigned int unit, const encodings& octets) {
            SCOPED_TRACE(made->get_type_name());
            check(*made, unit, octets);
        };
        with(std::make_unique<zr_asn_octetstring>(mode), 1,
             {"04 02 61 62 04 01 63", "24 80 04 01 61 24 80 04 01 62 00 00 00 00 04 00", "04 80 61 62",
              "24 80 04 01 61 05 00", "04 80 00 00 05"});
        with(std::make_unique<zr_asn_integer>(mode), 1, {"02 02 61 62 02 01 63", "02 05 61 62"});
        with(std::make_unique<zr_asn_bitstring>(mode), 8,
             {"03 03 04 61 ff 03 01 00", "23 80 03 02 00 61 23 80 03 02 04 6f 00 00 00 00 05 00", "03 02 09 61"});
        with(std::make_unique<zr_asn_any>(mode), 1, {"04 02 61 62 05 00", "30 03 02 01 61", "30 80 00 00"});
    }
}

// What an object holds can be what it is set from or what it reads, in secure mode as in another.
TEST(primitive, from_their_own_contents) {
    for_octet_types([](auto& object, unsigned int unit, const std::vector<const char*>& encodings) {
        const auto take = [&](const std::vector<unsigned char>& octets) {
            unsigned char* inside = nullptr;
            unsigned int count = 0;
            object.set_value(octets.data(), static_cast<unsigned int>(octets.size()) * unit);
            EXPECT_EQ(object.get_value(inside, count), 0);
            return inside;
        };
        object.set_value(take(bytes("61 62 63 64")) + 1, 2 * unit);
        EXPECT_EQ(contents(object, unit), "62 63");
        for (const char* row : encodings) {
            SCOPED_TRACE(row);
            std::remove_reference_t<decltype(object)> other(zr_normal);
            input elsewhere(row);
            const int expected = other.asnread(elsewhere);
            zr_r_buffer_t inside(take(bytes(row)), static_cast<unsigned int>(bytes(row).size()));
            EXPECT_EQ(object.asnread(inside), expected);
            EXPECT_EQ(inside.remaining(), elsewhere.remaining());
            EXPECT_EQ(contents(object, unit), contents(other, unit));
            if (expected != 0) continue;
            EXPECT_EQ(hex(inside), hex(elsewhere));  // and what follows can still be read
        }
    });
}

TEST(primitive, a_value_without_memory_changes_nothing) {
    const std::vector<unsigned char> more(300, 'x');
    for_octet_types([&](auto& object, unsigned int unit, const auto&) {
        zr_asn_sequence parent(zr_normal);
        parent.register_child(&object);
        for (const bool present : {false, true}) {
            if (present) object.set_value(bytes("61 62").data(), 2 * unit - unit / 8);
            const auto state = [&] {
                std::string text = std::to_string(object.is_encoding_valid() + 2 * parent.is_encoding_valid());
                text += " " + contents(object, unit);
                text += " " + written(object);
                return text + " " + written(parent);
            };
            state();  // fills the caches
            const std::string before = state();
            allocations watch;
            watch.fail_allocation(1);
            EXPECT_THROW(object.set_value(more.data(), 300 * unit), zr_asn_memexception);
            EXPECT_TRUE(watch.failed());
            watch.fail_allocation(0);
            EXPECT_EQ(state(), before);
        }
    });
    zr_asn_integer number(zr_normal);
    allocations watch;
    watch.fail_allocation(1);
    EXPECT_THROW(number.set_value(5L), zr_asn_memexception);
    EXPECT_EQ(value_of(number), "77, 275063200");
    watch.fail_allocation(0);
    number.set_value(5L);
    watch.fail_allocation(1);  // none is needed after that
    EXPECT_EQ(number.set_value(0x12345678L), 0);
    watch.fail_allocation(0);
    EXPECT_EQ(value_of(number), "305419896");
}

// What failed inside a segment of segments is not part of the contents; the segments that were complete are.
template <class T>
void expect_gathered(const char* octets, unsigned int count, unsigned int unit, const char* expected) {
    SCOPED_TRACE(octets);
    T object(zr_normal);
    EXPECT_NE(read(object, octets), 0);
    EXPECT_EQ(object.is_present(), 0);
    object.set_value_valid();
    unsigned char* data = nullptr;
    unsigned int gathered = 0;
    EXPECT_EQ(object.get_value(data, gathered), 0);
    EXPECT_EQ(gathered, count);
    EXPECT_EQ(contents(object, unit), expected);
}

TEST(primitive, contents_of_a_string_that_fails) {
    const auto string = expect_gathered<zr_asn_octetstring>;
    string("24 80 04 01 61 24 80 04 01 62 04 01 63 05 00", 1, 1, "61");
    string("24 80 24 80 04 01 62 05 00", 0, 1, "");
    string("24 80 24 80 24 03 04 01 62 05 00", 0, 1, "");
    string("24 80 24 80 04 01 61 00 00 04 01 62 24 03 04 01 63 04", 3, 1, "61 62 63");
    string("24 80 04 01 61 04 80 62", 1, 1, "61");
    const auto bits = expect_gathered<zr_asn_bitstring>;
    bits("23 80 03 02 00 61 23 80 03 02 00 62 05 00", 8, 8, "61");
    bits("23 08 03 02 04 ff 03 02 00 ff", 4, 8, "f0");
    bits("23 80 03 02 04 ff 05 00", 4, 8, "f0");
    bits("23 80 23 80 03 02 04 ff 03 02 00 61", 0, 8, "");
}

}  // namespace
}  // namespace zr_test
