// What each type and some records read and write, by the rows of elements.txt.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <memory>

#include "support/ber.h"
#include "support/routes.h"
#include "support/samples.h"

namespace zr_test {
namespace {

struct row {
    std::string octets, status, consumed, held, written;
};

// The name of a status, such as "no_match".
std::string name_of(int status) {
    // clang-format off
    static const std::map<int, const char*> names = {
        {zr_ok, "ok"}, {zr_err_data_ends_early, "data_ends_early"}, {zr_err_bad_contents, "bad_contents"},
        {zr_err_indefinite_length, "indefinite_length"}, {zr_err_constructed_form, "constructed_form"},
        {zr_err_primitive_form, "primitive_form"}, {zr_err_value_absent, "value_absent"},
        {zr_err_bad_bitstring, "bad_bitstring"}, {zr_err_bad_bitstring_segment, "bad_bitstring_segment"},
        {zr_err_no_match, "no_match"}, {zr_err_trailing_data, "trailing_data"},
        {zr_err_nothing_selected, "nothing_selected"}
    };
    // clang-format on
    const auto found = names.find(status);
    return found != names.end() ? found->second : std::to_string(status);
}

// Lets a new object and one that is used again and again read a row.
using checker = std::function<void(const row&)>;

// `set` gives an object its old value, `held` tells its new one; nothing when it has none.
template <class T, class Set, class Held>
checker check(Set set, Held held) {
    return [set, held, used = std::make_shared<T>(zr_normal)](const row& expected) {
        T fresh(zr_normal);
        for (T* object : {&fresh, used.get()}) {
            set(*object);
            const auto [status, consumed] = read_from(*object, expected.octets);
            EXPECT_EQ(name_of(status), expected.status);
            EXPECT_EQ(std::to_string(consumed), expected.consumed);
            const std::string value = held(*object);
            const std::string gap = object->is_present() != 0 ? "" : value.empty() ? "absent" : "absent ";
            EXPECT_EQ(gap + value, expected.held);
            zr_buffer_t output(zr_normal);
            const int writing = object->asnwrite(output);
            EXPECT_EQ(writing == 0 ? hex(output) : name_of(writing), expected.written);
        }
    };
}

template <class Object>
std::string number_in(const Object& object) {
    long value = 0;
    const int status = object.get_value(value);
    return status == 0 ? std::to_string(value) : status == zr_err_integer_too_long ? "does not fit" : "";
}

// The octets that are held; behind those of an OCTET STRING stands a zero.
template <class T>
checker check_octets(bool terminated) {
    return check<T>([](T& object) { object.set_value(bytes("01 02 03").data(), 3); },
                    [terminated](T& object) -> std::string {
                        unsigned char* data = nullptr;
                        unsigned int count = 0;
                        if (object.get_value(data, count) != 0) return "";
                        EXPECT_TRUE(!terminated || data[count] == 0);
                        return hex(data, count);
                    });
}

struct optional_choice : sample_choice {
    explicit optional_choice(security_t mode) : sample_choice(mode) { set_optional(1); }
};

template <class T>
checker check_choice() {
    return check<T>(
        [](T& object) {
            object.select(0);
            object.number.set_value(9);
        },
        [](T& object) { return object.selected() < 0 ? "" : std::to_string(object.selected()); });
}

const std::map<std::string, checker> types = {
    {"INTEGER", check<zr_asn_integer>([](auto& object) { object.set_value(9L); }, number_in<zr_asn_integer>)},
    {"BOOLEAN", check<zr_asn_boolean>([](auto& object) { object.set_value(1); },
                                      [](auto& object) {
                                          int value = 0;
                                          return object.get_value(value) == 0 ? std::to_string(value) : "";
                                      })},
    {"NULL", check<zr_asn_null>([](auto&) {}, [](auto&) { return ""; })},
    {"OCTET STRING", check_octets<zr_asn_octetstring>(true)},
    {"ANY", check_octets<zr_asn_any>(false)},
    {"BIT STRING", check<zr_asn_bitstring>([](auto& object) { object.set_value(bytes("01 02 03").data(), 20); },
                                           [](auto& object) -> std::string {
                                               unsigned char* data = nullptr;
                                               unsigned int bits = 0;
                                               if (object.get_value(data, bits) != 0) return "";
                                               return std::to_string(bits) + (bits != 0 ? ": " : "") +
                                                      hex(data, (bits + 7) / 8);
                                           })},
    {"SEQUENCE", check<sample_sequence>([](auto& object) { object.number.set_value(9L); },
                                        [](auto& object) { return number_in(object.number); })},
    {"SEQUENCE OF", check<zr_asn_sequenceof<zr_asn_integer>>(
                        [](auto& object) {
                            object.empty();
                            object.add_child()->set_value(9L);
                        },
                        [](auto& object) {
                            std::string values;
                            for (unsigned int i = 0; object[i] != nullptr; ++i) {
                                const std::string number = number_in(*object[i]);
                                values += (i != 0 ? " " : "") + (number.empty() ? "?" : number);
                            }
                            return values;
                        })},
    {"CHOICE", check_choice<sample_choice>()},
    {"CHOICE OPTIONAL", check_choice<optional_choice>()},
};

// On every way, without the envelope. What is consumed and held is not told.
void check_record(const zr::record_type& type, const row& expected) {
    for (const route& way : routes) {
        SCOPED_TRACE(way.name);
        structure decoded(type);
        const int status = decode(way, bytes(expected.octets), decoded);
        EXPECT_EQ(name_of(status), expected.status);
        EXPECT_EQ(status == 0 ? hex(encode(way, decoded).ber) : "", expected.written);
    }
}

TEST(elements, are_read_and_written_as_listed) {
    std::ifstream file(ZRASN_ELEMENTS);
    std::map<std::string, int> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        SCOPED_TRACE(line);
        std::vector<std::string> cells(1);
        for (const char c : line)
            c == '|' ? cells.emplace_back() : cells.back() += c;
        for (std::string& cell : cells) {
            cell.erase(0, cell.find_first_not_of(' '));
            cell.erase(cell.find_last_not_of(' ') + 1);
        }
        ASSERT_EQ(cells.size(), 7u);
        const row expected{cells[1], cells[2], cells[3], cells[4], cells[5]};
        const zr::record_type* record = zr::find_record(cells[0]);
        record != nullptr ? check_record(*record, expected) : types.at(cells[0])(expected);
        ++rows[cells[0]];
    }
    for (const auto& type : types)
        EXPECT_GT(rows[type.first], 0) << type.first;
}

}  // namespace
}  // namespace zr_test
