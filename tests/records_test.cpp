// Every record of the registry: what it is, and that random values survive every way out and back.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>

#include "asn1/asnbase/object.h"
#include "asn1/record/operations.h"
#include "base_idls/zrnbase_asn.h"
#include "support/allocations.h"
#include "support/hex.h"
#include "support/routes.h"

namespace zr_test {
namespace {

std::string contents_of(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The records that the headers of the schema modules describe are those of the registry, each in its module and behind
// the records that it contains; one header names all the modules.
TEST(registry, lists_what_the_headers_describe) {
    const std::filesystem::path headers(ZRASN_RECORDS);
    const std::string all = contents_of(headers / "../zrasn/records.h");
    std::map<std::string, std::string> described;  // the records and their modules
    for (const auto& entry : std::filesystem::directory_iterator(headers)) {
        if (entry.path().extension() != ".h") continue;
        EXPECT_NE(all.find("\"base_idls/" + entry.path().filename().string() + "\""), all.npos) << entry.path();
        const std::string text = contents_of(entry.path());
        const std::regex macro("ZR_RECORD(?:_OF_CLASS)?\\((\\w+),\\s*(\\w+),\\s*(\\w+)");
        for (std::sregex_iterator at(text.begin(), text.end(), macro), end; at != end; ++at) {
            const zr::record_type* type = zr::find_record((*at)[2].str());
            ASSERT_NE(type, nullptr) << (*at)[2] << " is in no ZR_DEFINE_MODULE";
            EXPECT_EQ(zr::find_record((*at)[3].str()), type);
            described[type->name] = (*at)[1];
        }
    }
    std::set<const zr::record_type*> seen;
    for (const zr::record_module* module : zr::modules()) {
        for (const zr::record_type* type : *module) {
            SCOPED_TRACE(type->name);
            EXPECT_EQ(described[type->name], module->name);
            EXPECT_STREQ(type->module, module->name);
            seen.insert(type);
            for (const zr::field& field : *type)
                EXPECT_TRUE(field.record == nullptr || seen.count(field.record) == 1) << "stands before its contents";
        }
    }
    EXPECT_EQ(seen.size(), described.size());
    EXPECT_GE(seen.size(), 65u);
    EXPECT_EQ(zr::find_record(""), nullptr);
    EXPECT_EQ(zr::find_record("attrlist_s"), nullptr);
}

TEST(registry, secret_members) {
    std::string secrets;
    for (const zr::record_type* type : all_records())
        for (const zr::field& field : *type)
            if (field.secret) secrets += type->name + ("." + std::string(field.name) + " ");
    EXPECT_EQ(secrets, "azn_util_password_in_s_t.str_a azn_util_password_in_s_t.str_b ");
}

TEST(registry, display_names) {
    // clang-format off
    const std::map<std::string, std::string> names = {
        {"uuid_t", "uuid_t"}, {"value_s_t", "value_t"}, {"attrlist_s_t", "attrlist_t"},
        {"namevalueList_s_t", "namevalueList_t"}, {"sec_id_pa_t", "sec_id_pa_t"},
        {"azn_id_get_creds_in_s_t", "azn_id_get_creds"}, {"azn_id_get_creds_out_s_t", "azn_id_get_creds"},
        {"dbr_get_db_out_s_t", "dbr_get_db_out_t"}, {"ejauditelement_s_t", "ejauditelement_t"},
        {"yvauthzn_db_s_t", "yvauthzn_db_t"}, {"remote_log_request", "RemoteLogRequest"},
        {"yvobj_update_list_s_t", "yvobj_update_lis"}, {"cert_request_in", "cert_request_in"}};
    // clang-format on
    for (const auto& [record, name] : names) {
        const std::unique_ptr<zr_asn_object> binding(zr::find_record(record)->make_binding(zr_normal));
        EXPECT_EQ(binding->get_type_name(), name);
    }
}

// For each record: structures with nothing in them, small ones, one with lengths of 16 bits and more, a deep one.
void each_random_structure(unsigned int seed, bool ascii, int small_ones, void (*check)(structure& original)) {
    std::mt19937 random(seed);
    for (const zr::record_type* type : all_records()) {
        for (int i = 0; i < small_ones + 3; ++i) {
            limits limits{2000, 4, ascii};
            if (i == 1) limits = {200000, 3, ascii};
            if (i == 2) limits = {20000, 50, ascii};
            structure original(*type);
            if (i != 0) fill(*type, original.get(), random, limits);
            SCOPED_TRACE(type->name + (" " + std::to_string(i)));
            check(original);
            if (testing::Test::HasFailure()) return;
        }
    }
}

// What a way has made of `original`, whose encoding is `ber`, and that nothing is left of it.
void expect_whole(const char* way, structure& original, structure& made, const octets& ber) {
    ASSERT_EQ(difference(original.type(), original.get(), made.get()), "") << way;
    ASSERT_EQ(encode(entry_points, made).ber, ber) << way;
    ASSERT_EQ(encode(object_tree, made).ber, ber) << way;
    ASSERT_EQ(leftover_of_free(made), "") << way;
}

TEST(records, random_values_survive_every_way_out_and_back) {
    each_random_structure(1, false, 20, [](structure& original) {
        const encoded first = encode(entry_points, original);
        ASSERT_EQ(first.status, 0);
        allocations watched;
        structure made(original.type());
        for (const route& way : routes) {
            ASSERT_EQ(hex(encode(way, original).ber), hex(first.ber)) << way.name;
            ASSERT_EQ(decode(way, first.ber, made), 0) << way.name;
            for (char** text : texts_of(made.type(), made.get()))
                ASSERT_NE(*text, nullptr) << way.name;
            expect_whole(way.name, original, made, first.ber);
        }
        ASSERT_EQ(zr::copy_record(original.type(), original.get(), made.get()), 0);
        expect_whole("copy", original, made, first.ber);
        ASSERT_EQ(watched.live(), 1u) << "besides the structure itself";
    });
}

TEST(records, local_and_plain_forms_agree_on_ascii) {
    each_random_structure(2, true, 3, [](structure& original) {
        const encoded plain = encode(entry_points, original);
        const encoded local = encode(local_entry_points, original);
        ASSERT_EQ(local.status, 0);
        ASSERT_EQ(local.ber, plain.ber);
        structure copy(original.type());
        ASSERT_EQ(decode(local_entry_points, plain.ber, copy), 0);
        ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "");
    });
}

// How long the blocks of a decoded structure are, in the order in which they are released; they are released.
std::vector<size_t> released_blocks(allocations& watched, structure& decoded) {
    std::vector<size_t> sizes;
    watched.on_release(
        [](void* all, const void*, size_t size) { static_cast<std::vector<size_t>*>(all)->push_back(size); }, &sizes);
    EXPECT_EQ(leftover_of_free(decoded), "");
    watched.on_release(nullptr, nullptr);
    return sizes;
}

// The structure holds the same blocks too: what reading lists of unknown length takes too much is given back, and an
// empty one has no array.
TEST(records, other_encodings_of_the_value_decode_to_it) {
    static std::mt19937 random(3);
    each_random_structure(4, false, 20, [](structure& original) {
        allocations watched;
        const octets plain = encode(entry_points, original).ber;
        const ber_value value = parse_ber(plain);
        for (const route& way : routes) {
            structure first(original.type());
            ASSERT_EQ(decode(way, plain, first), 0);
            const std::vector<size_t> blocks = released_blocks(watched, first);
            for (const rewriting permitted : {rewriting{false, true, false, false}, rewriting{}}) {
                const octets other = rewrite_ber(value, random, permitted);
                structure copy(original.type());
                ASSERT_EQ(decode(way, other, copy), 0) << way.name << " " << hex(other);
                ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "") << way.name << " " << hex(other);
                ASSERT_EQ(released_blocks(watched, copy), blocks) << way.name << " " << hex(other);
            }
        }
    });
}

// A binding object decodes and encodes any number of times, whatever it has held before.
TEST(records, a_binding_object_can_be_used_again) {
    std::mt19937 random(5);
    for (const zr::record_type* type : all_records()) {
        SCOPED_TRACE(type->name);
        const std::unique_ptr<zr_asn_object> object(type->make_binding(zr_normal));
        auto& binding = static_cast<zr_asnbase&>(*object);
        for (int round = 0; round < 6; ++round) {
            structure original(*type);
            if (round != 3) fill(*type, original.get(), random);
            octets ber = encode(entry_points, original).ber;
            if (round % 2 == 0) {
                zr_r_buffer_t cut(ber.data(), static_cast<unsigned int>(ber.size() - 1));
                ASSERT_EQ(binding.asnread(cut), zr_err_data_ends_early);
                zr::set_fields(binding, *type, original.get());
                zr_buffer_t out(zr_normal);
                ASSERT_EQ(binding.asnwrite(out), 0);
                ASSERT_EQ(hex(out.data(), out.length()), hex(ber));
            } else {
                zr_r_buffer_t in(ber.data(), static_cast<unsigned int>(ber.size()));
                ASSERT_EQ(binding.asnread(in), 0);
                structure copy(*type);
                zr::get_fields(binding, *type, copy.get());
                ASSERT_EQ(difference(*type, original.get(), copy.get()), "");
            }
        }
    }
}

TEST(records, binding_classes_encode_and_decode) {
    const uuid_t original = {1, 2, 3, 4, 5, {6, 7, 8, 9, 10, 11}};
    uuid_t copy{};
    asn_uuid_t binding(zr_normal);
    zr_asn_buffer_t out{};
    ASSERT_EQ(binding.encode_obj(original, out, 2), 0);
    EXPECT_EQ(hex(out.data, out.length),
              "04 02 ac dc 30 17 02 01 01 02 01 02 02 01 03 02 01 04 02 01 05 04 06 06 07 08 09 0a 0b");
    EXPECT_EQ(binding.decode_obj(copy, out, 3), zr_err_bad_envelope);
    EXPECT_EQ(copy.time_low, 0u);
    EXPECT_EQ(binding.decode_obj(copy, out, 2), 0);
    EXPECT_EQ(std::memcmp(&copy, &original, sizeof copy), 0);
    // The functions by the structure's type, of a structure without blocks or texts.
    for (const auto decode : {static_cast<int (*)(zr_asn_buffer_t&, uuid_t&)>(zrAsnDecodeObj),
                              static_cast<int (*)(zr_asn_buffer_t&, uuid_t&)>(zrAsnDecodeObjLCS)}) {
        copy = {};
        EXPECT_EQ(decode(out, copy), 0);
        EXPECT_EQ(std::memcmp(&copy, &original, sizeof copy), 0);
    }
    zr_asn_buffer_free(out);
}

// Structures have an order, in which those are equal that have the same encoding.
TEST(records, structures_are_ordered) {
    std::mt19937 random(7);
    for (const zr::record_type* type : all_records()) {
        SCOPED_TRACE(type->name);
        structure first(*type), second(*type), third(*type);
        int equal = 0;
        for (int i = 0; i < 60; ++i) {
            structure* each[] = {&first, &second, &third};
            const size_t octets = i % 2 == 0 ? 12 : 200;
            for (structure* made : each) {
                type->free(made->get());
                std::memset(made->get(), 0, type->size);
                fill(*type, made->get(), random, {octets, 2, false});
            }
            const auto order = [&](structure& left, structure& right) {
                int answer = 0;
                EXPECT_EQ(zr::order_records(*type, left.get(), right.get(), answer), 0);
                return answer < 0 ? -1 : answer > 0 ? 1 : 0;
            };
            const int forwards = order(first, second);
            EXPECT_EQ(order(second, first), -forwards);
            EXPECT_EQ(forwards == 0, encode(entry_points, first).ber == encode(entry_points, second).ber);
            EXPECT_EQ(order(first, first), 0);
            if (forwards <= 0 && order(second, third) <= 0) {
                EXPECT_LE(order(first, third), 0);
            }
            equal += forwards == 0;
        }
        EXPECT_LT(equal, 60);
    }
}

}  // namespace
}  // namespace zr_test
