// Every record of the registry: what it is, and that random values survive every way out and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "asn1/asnbase/object.h"
#include "support/allocations.h"
#include "support/hex.h"
#include "support/routes.h"

namespace zr_test {
namespace {

using zr::field_kind;

struct extent {
    size_t size, alignment;
};

// What a structure has when its members are those of the fields and no others; no size when they lie otherwise.
extent extent_of(const zr::record_type& type) {
    std::multimap<size_t, extent> members;  // by their offsets
    for (const zr::field& field : type) {
        if (field.count_name != nullptr) members.insert({field.count_offset, {field.count.octets, field.count.octets}});
        extent member{sizeof(void*), alignof(void*)};
        if (field.kind == field_kind::integer) member = {field.integer.octets, field.integer.octets};
        if (field.kind == field_kind::fixed_octets) member = {field.size, 1};
        if (field.kind == field_kind::slots) member.size *= field.size;
        if (field.kind == field_kind::nested) member = extent_of(*field.nested);
        members.insert({field.offset, member});
    }
    extent whole{0, 1};
    const auto padded = [&](size_t alignment) { return (whole.size + alignment - 1) / alignment * alignment; };
    for (const auto& [offset, member] : members) {
        if (offset != padded(member.alignment)) return {0, 1};
        whole = {offset + member.size, std::max(whole.alignment, member.alignment)};
    }
    return {padded(whole.alignment), whole.alignment};
}

TEST(registry, lists_the_records_of_every_module) {
    // clang-format off
    const std::map<std::string, int> counts = {
        {"zrnbase_asn", 1}, {"attrlist_asn", 3}, {"namevalue_asn", 2}, {"yvobj_base_asn", 1}, {"yvobj_asn", 3},
        {"pobj_asn", 3}, {"principal_asn", 4}, {"azn_remote_authn_asn", 4}, {"yvsvr_enc_asn", 2},
        {"azn_remote_creds_mod_asn", 2}, {"aznserver_asn", 9}, {"azn_remote_entitlements_asn", 2},
        {"dbreplica_asn", 2}, {"azn_remote_authz_asn", 2}, {"aclidl_asn", 5}, {"actionidl_asn", 3},
        {"yvpopobjs_asn", 6}, {"yvaclobjs_asn", 4}, {"ejauditidl_asn", 3}, {"RemoteLog_asn", 1}};
    // clang-format on
    std::map<std::string, int> found;
    std::set<const zr::record_type*> seen;
    for (const zr::record_module* module : zr::modules()) {
        for (const zr::record_type* type : *module) {
            SCOPED_TRACE(type->name);
            ++found[module->name];
            EXPECT_STREQ(type->module, module->name);
            EXPECT_EQ(zr::find_record(type->name), type);
            EXPECT_EQ(zr::find_record(type->binding), type);
            EXPECT_EQ(extent_of(*type).size, type->size) << "a member without a field";
            seen.insert(type);
            for (const zr::field& field : *type)
                EXPECT_TRUE(field.nested == nullptr || seen.count(field.nested) == 1) << "stands before its contents";
        }
    }
    // There may be more than these.
    for (const auto& [module, count] : counts)
        EXPECT_GE(found[module], count) << module;
    EXPECT_GE(seen.size(), 62u);
    EXPECT_EQ(zr::find_record(""), nullptr);
    EXPECT_EQ(zr::find_record("attrlist_s"), nullptr);
}

TEST(registry, display_names) {
    // clang-format off
    const std::map<std::string, std::string> names = {
        {"uuid_t", "uuid_t"}, {"value_s_t", "value_t"}, {"attrlist_s_t", "attrlist_t"},
        {"namevalueList_s_t", "namevalueList_t"}, {"sec_id_pa_t", "sec_id_pa_t"},
        {"azn_id_get_creds_in_s_t", "azn_id_get_creds"}, {"azn_id_get_creds_out_s_t", "azn_id_get_creds"},
        {"dbr_get_db_out_s_t", "dbr_get_db_out_t"}, {"ejauditelement_s_t", "ejauditelement_t"},
        {"yvauthzn_db_s_t", "yvauthzn_db_t"}, {"remote_log_request", "RemoteLogRequest"}};
    // clang-format on
    for (const auto& [record, name] : names) {
        const std::unique_ptr<zr_asn_object> binding(zr::find_record(record)->codec.make_binding(zr_normal));
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

TEST(records, random_values_survive_every_way_out_and_back) {
    each_random_structure(1, false, 20, [](structure& original) {
        const encoded first = encode(entry_points, original);
        ASSERT_EQ(first.status, 0);
        for (const route& way : routes) {
            SCOPED_TRACE(way.name);
            ASSERT_EQ(hex(encode(way, original).ber), hex(first.ber));
            allocations watched;
            structure copy(original.type());
            ASSERT_EQ(decode(way, first.ber, copy), 0);
            ASSERT_EQ(difference(original.type(), original.get(), copy.get()), "");
            for (char** text : texts_of(copy.type(), copy.get()))
                ASSERT_NE(*text, nullptr);
            ASSERT_EQ(encode(way, copy).ber, first.ber);
            ASSERT_EQ(leftover_of_free(copy), "");
            ASSERT_EQ(watched.live(), 1u) << "besides the structure itself";
        }
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
        const std::unique_ptr<zr_asn_object> object(type->codec.make_binding(zr_normal));
        auto& binding = static_cast<zr_asnbase&>(*object);
        for (int round = 0; round < 6; ++round) {
            structure original(*type);
            if (round != 3) fill(*type, original.get(), random);
            octets ber = encode(entry_points, original).ber;
            if (round % 2 == 0) {
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

}  // namespace
}  // namespace zr_test
