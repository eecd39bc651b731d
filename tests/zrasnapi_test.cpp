#include "asn1/zrasnapi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "asn1/asn_yvobjs.h"
#include "asn1/record/registry.h"
#include "support/allocations.h"
#include "support/ber.h"
#include "support/caught_stderr.h"
#include "support/out_of_memory.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

// A public buffer over octets of the test's own.
zr_asn_buffer_t over(std::vector<unsigned char>& octets) {
    return {static_cast<unsigned int>(octets.size()), octets.data()};
}

// The octets that encoding gives, or the status as text.
std::string encoded(unsigned int type, void* value, int version = 2) {
    zr_asn_buffer_t out{};
    const int status = zrasn_encode_obj(version, value, type, out);
    std::string text = status != 0 ? std::to_string(status) : hex(out.data, out.length);
    zr_asn_buffer_free(out);
    return text;
}

size_t size_of(unsigned int type) {
    return type == 259   ? sizeof(cert_request_in)
           : type == 260 ? sizeof(yvobj_update_list_s_t)
                         : sizeof(zrasn_integer_value);
}

int decode(std::string_view text, unsigned int type, void* value, int version = 2) {
    auto octets = bytes(text);
    zr_asn_buffer_t in = over(octets);
    return zrasn_decode_obj(version, in, type, value);
}

std::string shown(const char* text) { return text != nullptr ? "'" + std::string(text) + "'" : "null"; }

std::string shown(const cert_request_in& value) {
    return shown(value.str_a) + " " + shown(value.str_b) + " " +
           (value.body == nullptr ? "null" : hex(value.body, value.body_length)) + " " +
           std::to_string(value.body_length);
}

std::string shown(const yvobj_update_list_s_t& value) {
    std::string text = std::to_string(value.count);
    for (uint32_t i = 0; value.updates != nullptr && i < value.count; ++i)
        text += " " + std::to_string(value.updates[i].int_a) + shown(value.updates[i].name) +
                std::to_string(value.updates[i].int_b);
    return text + (value.updates == nullptr ? " null" : "");
}

std::string shown(zrasn_integer_value value) { return std::to_string(value); }

// Room for any value of the interface, all zero.
union any_value {
    cert_request_in request;
    yvobj_update_list_s_t list;
    zrasn_integer_value number;
};

char name_a[] = "a";
char name_b[] = "b";
char no_text[] = "";
unsigned char body[] = {0, 0xff};
yvobj_update_s_t three[] = {{1, name_a, 2}, {3, name_b, 4}, {5, name_a, 6}};

// Encodes, decodes, compares both, releases. `text` is the value as decoded.
template <class Value>
void round_trip(unsigned int type, Value value, const char* text, const char* octets) {
    SCOPED_TRACE(octets);
    const std::string whole = std::string("04 02 ac dc ") + octets;
    EXPECT_EQ(encoded(type, &value), whole);
    allocations watch;
    Value back;
    std::memset(&back, 0xAA, sizeof back);
    ASSERT_EQ(decode(whole, type, &back), 0);
    EXPECT_EQ(shown(back), text);
    for (int twice = 0; twice < 2; ++twice) {
        EXPECT_EQ(zrasn_obj_free(0, type, &back), 0);
        EXPECT_EQ(shown(back), type == zrasn_type_integer ? text : shown(Value{}));
    }
    EXPECT_EQ(watch.live(), 0u);
}

TEST(zrasnapi, values_there_and_back) {
    using request = cert_request_in;
    round_trip(259, request{name_a, name_b, 2, body}, "'a' 'b' 00 ff 2",
               "30 0f 02 01 01 04 02 61 00 04 02 62 00 04 02 00 ff");
    round_trip(259, request{name_a, no_text, 0, body}, "'a' '' null 0", "30 0a 02 01 01 04 02 61 00 04 01 00");
    round_trip(259, request{nullptr, name_b, 5, nullptr}, "'' 'b' null 0", "30 0a 02 01 01 04 01 00 04 02 62 00");
    yvobj_update_s_t updates[] = {{-1, name_a, INT32_MIN}, {128, nullptr, INT32_MAX}};
    using list = yvobj_update_list_s_t;
    for (const list& empty : {list{0, nullptr}, list{3, nullptr}, list{0, updates}})
        round_trip(260, empty, "0 null", "30 05 02 01 01 30 00");
    round_trip(260, list{2, updates}, "2 -1'a'-2147483648 128''2147483647",
               "30 29 02 01 01 30 24 30 10 02 01 01 02 01 ff 04 02 61 00 02 04 80 00 00 00 "
               "30 10 02 01 01 02 02 00 80 04 01 00 02 04 7f ff ff ff");
    round_trip(zrasn_type_integer, zrasn_integer_value{7}, "7", "02 01 07");
    round_trip(zrasn_type_integer, zrasn_integer_value{INT32_MIN}, "-2147483648", "02 04 80 00 00 00");
    EXPECT_EQ(zrasn_obj_free(0, zrasn_type_integer, nullptr), 0);
    EXPECT_EQ(zrasn_type_cert_request, 259);
    EXPECT_EQ(zrasn_type_update_list, 260);
}

// Exactly 32 bits are read and written on every word size.
TEST(zrasnapi, integer_values_have_32_bits) {
    // clang-format off
    const struct { const char* octets; int status; zrasn_integer_value value; } rows[] = {
        {"04 02 ac dc 02 01 ff", 0, -1}, {"04 02 ac dc 02 05 00 ff ff ff ff", 0, -1},
        {"04 02 ac dc 02 05 01 00 00 00 00", zr_err_integer_too_long, 0}, {"04 02 ac dc 02 00", 0, 0},
        {"04 02 ac dc 04 01 07", zr_err_no_match, 5}
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        zrasn_integer_value values[] = {4, 5, 6};
        EXPECT_EQ(decode(row.octets, zrasn_type_integer, &values[1]), row.status);
        EXPECT_EQ(values[0], 4);
        EXPECT_EQ(values[1], row.value);
        EXPECT_EQ(values[2], 6);
    }
}

TEST(zrasnapi, unknown_type_codes_do_nothing) {
    for (unsigned int type : {0u, 1u, 258u, 261u, 263u, ~0u}) {
        SCOPED_TRACE(type);
        zr_asn_buffer_t untouched{3, body};
        EXPECT_EQ(zrasn_encode_obj(2, nullptr, type, untouched), -1);
        EXPECT_EQ(zrasn_decode_obj(2, untouched, type, nullptr), -1);
        EXPECT_EQ(zrasn_obj_free(2, type, nullptr), -1);
        EXPECT_EQ(untouched.data, body);
        EXPECT_EQ(untouched.length, 3u);
    }
}

TEST(zrasnapi, the_version_counts_by_its_low_octet) {
    zrasn_integer_value value = 7;
    EXPECT_EQ(encoded(zrasn_type_integer, &value, 0), "04 00 ac dc 02 01 07");
    EXPECT_EQ(encoded(zrasn_type_integer, &value, -1), "04 ff ac dc 02 01 07");
    for (const int version : {258, -254, 3, 0}) {
        const bool same = version == 258 || version == -254;
        value = 1;
        EXPECT_EQ(decode("04 02 ac dc 02 01 07", zrasn_type_integer, &value, version), same ? 0 : zr_err_bad_envelope);
        EXPECT_EQ(value, same ? 7 : 1) << version;
    }
    auto octets = bytes("04 07 ad dc 05 00");
    unsigned int flag = 9;
    EXPECT_EQ(zrasn_version(over(octets), flag), zr_err_bad_envelope);
    EXPECT_EQ(flag, 1u);
}

TEST(zrasnapi, refused_octets_leave_the_value_alone) {
    // clang-format off
    const struct { unsigned int type; const char* octets; int status; } rows[] = {
        {259, "", zr_err_bad_envelope}, {259, "04 02 ac dc", zr_err_bad_envelope},
        {259, "05 02 ac dc 30", zr_err_data_ends_early}, {259, "06 02 ac dc 30", zr_err_bad_envelope},
        {259, "00 02 ac dc 30 00", zr_err_bad_envelope}, {259, "04 02 ac dc 31 00", zr_err_no_match},
        {259, "04 02 ac dc 30 00", zr_err_data_ends_early},
        {259, "04 02 ac dc 30 07 02 01 01 04 02 61 00", zr_err_data_ends_early},
        {259, "04 02 ac dc 30 0b 02 01 01 04 02 61 00 04 01 00 00", zr_err_trailing_data},
        {259, "04 02 ac dc 30 0c 02 01 01 04 02 61 00 04 01 00 05 00", zr_err_trailing_data},
        {260, "04 02 ac dc 30 03 02 01 01", zr_err_data_ends_early},
        {260, "04 02 ac dc 30 05 02 01 01 31 00", zr_err_no_match},
        {260, "04 02 ac dc 30 07 02 01 01 30 02 02 00", zr_err_no_match},
        {260, "04 02 ac dc 30 07 02 01 01 30 80 30 00", zr_err_data_ends_early},
        {260, "04 02 ac dc 30 84 ff ff ff ff 02 01 01", zr_err_data_ends_early}
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.octets);
        std::vector<unsigned char> value(sizeof(cert_request_in), 0x5A);
        const auto before = value;
        allocations watch;
        EXPECT_EQ(decode(row.octets, row.type, value.data()), row.status);
        EXPECT_EQ(value, before);
        EXPECT_EQ(watch.live(), 0u);
    }
}

// Every octet missing, and every one changed: a status or a value, nothing lost.
TEST(zrasnapi, damaged_encodings_do_no_harm) {
    yvobj_update_list_s_t list{2, three};
    cert_request_in request{name_a, name_b, 2, body};
    const std::string encodings[] = {encoded(259, &request), encoded(260, &list)};
    for (unsigned int i = 0; i < 2; ++i) {
        const auto good = bytes(encodings[i]);
        auto check = [&](std::vector<unsigned char> octets) {
            allocations watch;
            any_value value{};
            zr_asn_buffer_t in = over(octets);
            static_cast<void>(zrasn_decode_obj(2, in, 259 + i, &value));
            EXPECT_EQ(zrasn_obj_free(2, 259 + i, &value), 0);
            EXPECT_EQ(watch.live(), 0u) << hex(octets);
        };
        for (size_t at = 0; at < good.size(); ++at) {
            check({good.begin(), good.begin() + static_cast<ptrdiff_t>(at)});
            for (unsigned int octet = 0; octet < 256; ++octet) {
                auto changed = good;
                changed[at] = static_cast<unsigned char>(octet);
                check(changed);
            }
        }
    }
}

// Half a list is never written as a whole one, and half a value is never handed out. What the runtime throws is
// reported in one line, and only then is there a line.
TEST(zrasnapi, exhausted_memory) {
    cert_request_in request{name_a, name_b, 2, body};
    yvobj_update_list_s_t list{3, three};
    zrasn_integer_value number = 7;
    const std::pair<unsigned int, void*> values[] = {{259, &request}, {260, &list}, {262, &number}};
    for (const auto& [type, value] : values) {
        const std::string whole = encoded(type, value);
        auto octets = bytes(whole);
        zr_asn_buffer_t in = over(octets);
        for (const bool encodes : {true, false}) {
            SCOPED_TRACE(testing::Message() << (encodes ? "encoding " : "decoding ") << type);
            fail_each_allocation([&, code = type, from = value](auto&& failing) {
                zr_asn_buffer_t out{};
                any_value back{};
                std::memset(&back, 0x5A, sizeof back);
                int status = 0;
                caught_stderr printed;
                const bool failed =
                    0 != failing([&] {
                        status = encodes ? zrasn_encode_obj(2, from, code, out) : zrasn_decode_obj(2, in, code, &back);
                    });
                EXPECT_EQ(status, failed ? zr_err_out_of_memory : 0);
                const std::string line = printed.take();
                EXPECT_TRUE(line.empty() || (failed && line.rfind("Exception: Out of memory", 0) == 0 &&
                                             line.find(" [10652065] in src/asn1/as") != line.npos &&
                                             line.find('\n') == line.size() - 1))
                    << line;
                if (encodes) {
                    EXPECT_EQ(hex(out.data, out.length), failed ? "" : whole);
                    zr_asn_buffer_free(out);
                } else {
                    const auto* first = reinterpret_cast<const unsigned char*>(&back);
                    EXPECT_TRUE(!failed ||
                                std::all_of(first, first + size_of(code), [](int octet) { return octet == 0; }));
                    EXPECT_EQ(zrasn_obj_free(2, code, &back), 0);
                }
            });
        }
    }
}

// What a value takes: its two texts with all octets that are stored, and the zero octet behind them.
TEST(zrasnapi, forms_that_others_write) {
    // clang-format off
    const struct { const char* version; const char* text; const char* body; const char* stored; } rows[] = {
        {"02 01 01", "04 02 61 00", "", "61 00 00"},      {"02 01 07", "04 02 61 00", "", "61 00 00"},
        {"02 00", "04 02 61 00", "", "61 00 00"},         {"02 05 01 00 00 00 00", "04 02 61 00", "", "61 00 00"},
        {"02 01 01", "04 00", "", "00"},                  {"02 01 01", "04 01 41", "", "00"},
        {"02 01 01", "04 01 00", "", "00"},               {"02 01 01", "04 02 41 42", "", "41 42 00"},
        {"02 01 01", "04 04 61 00 62 00", "", "61 00 62 00 00"},
        {"02 01 01", "24 80 04 01 61 24 03 04 01 62 00 00", "", "61 62 00"}, {"02 01 01", "24 03 04 01 61", "", "00"},
        {"02 01 01", "04 01 00", "04 00", "00"},          {"02 01 01", "04 01 00", "24 80 04 00 00 00", "00"},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.version << ", " << row.text << ", " << row.body);
        const std::string fields = std::string(row.version) + " " + row.text + " 04 01 00 " + row.body;
        allocations watch;
        cert_request_in request{name_a, name_b, 7, body};
        ASSERT_EQ(decode("04 02 ac dc 30 80 " + fields + " 00 00", 259, &request), 0);
        EXPECT_EQ(hex(request.str_a, bytes(row.stored).size()), row.stored);
        EXPECT_STREQ(request.str_b, "");
        EXPECT_EQ(request.body, nullptr);
        EXPECT_EQ(request.body_length, 0u);
        const size_t length = std::strlen(request.str_a) + 1;
        EXPECT_EQ(encoded(259, &request).substr(18),
                  "02 01 01 04 0" + std::to_string(length) + " " + hex(request.str_a, length) + " 04 01 00");
        EXPECT_EQ(zrasn_obj_free(2, 259, &request), 0);
        EXPECT_EQ(watch.live(), 0u);
    }
}

// A text says so by its name, a body too; an array does not.
TEST(zrasnapi, exhausted_memory_is_named) {
    const struct {
        unsigned int type;
        const char* octets;
        std::vector<std::string> lines;
    } rows[] = {{259,
                 "30 0f 02 01 01 04 02 61 00 04 02 62 00 04 02 00 ff",
                 {"Exception: Out of memory get_strvalue() [10652065] in src/asn1/asnutils ",
                  "Exception: Out of memory get_strvalue() [10652065] in src/asn1/asnutils ",
                  "Exception: Out of memory get_obj_body() [10652065] in src/asn1/asn_yvobjs "}},
                {260,
                 "30 14 02 01 01 30 0f 30 0d 02 01 01 02 01 01 04 02 61 00 02 01 02",
                 {"", "Exception: Out of memory get_strvalue() [10652065] in src/asn1/asnutils "}}};
    for (const auto& row : rows) {
        size_t n = 0;
        zr_test::fail_each_allocation([&](auto&& failing) {
            auto octets = bytes(std::string("04 02 ac dc ") + row.octets);
            zr_asn_buffer_t in = over(octets);
            any_value value{};
            zr_test::caught_stderr printed;
            int status = 0;
            if (!failing([&] { status = zrasn_decode_obj(2, in, row.type, &value); })) {
                EXPECT_EQ(n, row.lines.size());
                EXPECT_EQ(zrasn_obj_free(2, row.type, &value), 0);
                return;
            }
            EXPECT_EQ(status, zr_err_out_of_memory);
            const std::string expected = row.lines[n++], line = printed.take();
            EXPECT_EQ(line.substr(0, expected.size() + (expected.empty() ? 1 : 0)), expected);
        });
    }
}

// The process's locale is "C": a text that went through a converter would be refused.
TEST(zrasnapi, nothing_is_converted) {
    char text[] = "B\xC3\xBCro";
    cert_request_in request{text, text, 0, nullptr};
    const zr::record_type& type = *zr::find_record("cert_request_in");
    zr_asn_buffer_t out{};
    ASSERT_EQ(type.encode_lcs(out, &request), 0);
    EXPECT_EQ(hex(out.data, out.length), encoded(259, &request));
    cert_request_in back{};
    EXPECT_EQ(type.decode_lcs(out, &back), 0);
    EXPECT_STREQ(back.str_a, text);
    type.free(&back);
    zr_asn_buffer_free(out);
}

TEST(yvobj_update_list, a_failing_element_leaves_the_full_count) {
    zr_asn_yvobj_update_list_t object(zr_normal);
    yvobj_update_list_s_t list{3, three};
    ASSERT_EQ(object.set_value(list), 0);
    size_t n = 0;
    for (const char* left : {"3 null", "3 1null2 0null0 0null0", "3 1'a'2 3null4 0null0", "3 1'a'2 3'b'4 5null6"}) {
        allocations watch;
        yvobj_update_list_s_t out{};
        watch.fail_allocation(++n);
        int status = 0;
        const bool threw = thrown([&] { status = object.get_value(out); }) ==
                           "memory 275062885: Out of memory get_strvalue() in src/asn1/asnutils";
        EXPECT_TRUE(threw || status == zr_err_out_of_memory) << status;
        EXPECT_EQ(shown(out), left);
        zr_asn_yvobj_update_list_t::free_obj(out);
        EXPECT_EQ(shown(out), "0 null");
        EXPECT_EQ(watch.live(), 0u);
    }
}

// An element takes two allocations, the object and its table of members. Either failing is a status, no exception.
TEST(yvobj_update_list, an_element_that_cannot_be_made_is_a_status) {
    yvobj_update_list_s_t list{1, three};
    for (size_t n : {1u, 2u}) {
        zr_asn_yvobj_update_list_t object(zr_normal);
        allocations watch;
        watch.fail_allocation(n);
        EXPECT_EQ(object.set_value(list), zr_err_out_of_memory) << n;
        EXPECT_EQ(written(object), std::to_string(zr_err_value_absent));
        EXPECT_EQ(object.set_value(list), 0);
        EXPECT_EQ(written(object), "30 14 02 01 01 30 0f 30 0d 02 01 01 02 01 01 04 02 61 00 02 01 02");
    }
}

TEST(cert_request_in, the_body_is_released_by_its_length) {
    zr_asn_octetstring octets(zr_normal);
    unsigned long length = 9;
    unsigned char* data = body;
    EXPECT_EQ(zr_asn_cert_request_in::get_obj_body(octets, length, data), 0);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(data, nullptr);
    octets.set_value(body, sizeof body);
    ASSERT_EQ(zr_asn_cert_request_in::get_obj_body(octets, length, data), 0);
    EXPECT_EQ(hex(data, length), "00 ff");
    cert_request_in request{nullptr, nullptr, 0, data};
    zr_asn_cert_request_in::free_obj(request);  // of length 0: not the record's
    std::free(data);
    EXPECT_EQ(request.body, nullptr);
    allocations watch;
    watch.fail_allocation(1);
    EXPECT_EQ(thrown([&] { zr_asn_cert_request_in::get_obj_body(octets, length, data); }),
              "memory 275062885: Out of memory get_obj_body() in src/asn1/asn_yvobjs");
    EXPECT_EQ(data, nullptr);
}

// Sets an object that may hold another value already.
template <class Object, class Value>
void set_like_a_new_one(Object& object, Value value) {
    Object unused(zr_normal);
    EXPECT_EQ(object.set_value(value), 0);
    EXPECT_EQ(unused.set_value(value), 0);
    EXPECT_EQ(written(object), written(unused));
}

TEST(hand_written_records, objects_can_be_used_again) {
    zr_asn_yvobj_update_t update(zr_normal);
    zr_asn_yvobj_update_list_t list(zr_normal);
    zr_asn_cert_request_in request(zr_normal);
    EXPECT_STREQ(update.get_type_name(), "yvobj_update");
    EXPECT_STREQ(list.get_type_name(), "yvobj_update_lis");
    EXPECT_STREQ(request.get_type_name(), "cert_request_in");

    EXPECT_EQ(written(update), std::to_string(zr_err_value_absent));
    for (const char* text : {"a", "bcd", "a"}) {
        yvobj_update_s_t in{1, const_cast<char*>(text), 5};
        set_like_a_new_one(update, in);
        set_like_a_new_one(list, yvobj_update_list_s_t{1, &in});
        set_like_a_new_one(request, cert_request_in{in.name, in.name, text[1] == 0 ? 0u : 2u, body});
    }
    EXPECT_EQ(written(update), "30 0d 02 01 01 02 01 01 04 02 61 00 02 01 05");
}

// The version is not compared; an object that has read another one keeps it, an emptied one starts with 1.
TEST(hand_written_records, the_version_stays) {
    cert_request_in in{name_a, name_b, 0, nullptr};
    zr_asn_cert_request_in request(zr_normal);
    ASSERT_EQ(read(request, "30 0b 02 01 07 04 02 61 00 04 02 62 00"), 0);
    ASSERT_EQ(request.set_value(in), 0);
    EXPECT_EQ(written(request), "30 0b 02 01 07 04 02 61 00 04 02 62 00");
    request.empty();
    ASSERT_EQ(request.set_value(in), 0);
    EXPECT_EQ(written(request), "30 0b 02 01 01 04 02 61 00 04 02 62 00");

    yvobj_update_s_t update_in{1, name_a, 5};
    zr_asn_yvobj_update_t update(zr_normal);
    ASSERT_EQ(read(update, "30 0c 02 01 09 02 01 01 04 01 00 02 01 05"), 0);
    ASSERT_EQ(update.set_value(update_in), 0);
    EXPECT_EQ(written(update), "30 0d 02 01 09 02 01 01 04 02 61 00 02 01 05");
}

TEST(buffers, copies) {
    unsigned int status = 9;
    zr_asn_buffer_t out{7, body};
    for (const zr_asn_buffer_t& in :
         {zr_asn_buffer_t{2, body}, zr_asn_buffer_t{5, nullptr}, zr_asn_buffer_t{0, body}}) {
        const bool whole = in.length == 2;
        status = 9;
        zr_asn_buffer_copy(in, out, status);
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(hex(out.data, out.length), whole ? "00 ff" : "");
        EXPECT_TRUE(whole ? out.data != body : out.data == nullptr);
        zr_asn_buffer_free(out);
    }
    allocations watch;
    watch.fail_allocation(1);
    zr_asn_buffer_copy({2, body}, out, status);
    EXPECT_EQ(status, 275062885u);
    EXPECT_EQ(out.length, 2u);
    EXPECT_EQ(out.data, nullptr);
}

}  // namespace
}  // namespace zr_test
