// Building and changing structures: every list, slot, text and record of every record type, with memory ending too.
#include "zrasn/edit.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "asn1/codec/define_record.h"
#include "asn1/record/members.h"
#include "asn1/record/operations.h"
#include "base_idls/actionidl_asn.h"
#include "base_idls/asn_yvobjs.h"
#include "base_idls/azn_remote_authn_asn.h"
#include "base_idls/namevalue_asn.h"
#include "base_idls/principal_asn.h"
#include "support/allocations.h"
#include "support/caught_stderr.h"
#include "support/routes.h"
#include "zrasn/attributes.h"

// An element that is larger than most.
struct wide_t {
    unsigned char first[100], second[100], third[100];
};
ZR_RECORD(wide, wide_t, asn_wide_t, zr::fixed_octets(ZR_M(first)), zr::fixed_octets(ZR_M(second)),
          zr::fixed_octets(ZR_M(third)));
struct wide_list_t {
    uint32_t count;
    wide_t* elements;
};
ZR_RECORD(wide, wide_list_t, asn_wide_list_t, zr::list(ZR_M(count), ZR_M(elements)));
ZR_DEFINE_MODULE(wide, wide_t, wide_list_t);

namespace zr_test {
namespace {

// The value in a place of a structure, to be put elsewhere; a null text is an empty one.
zr::new_value value_in(const zr::field& field, const void* structure, uint32_t index) {
    if (field.value == zr::value_kind::text || field.value == zr::value_kind::stored_text) {
        const char* text = zr::text_in(zr::place_at(field, structure, index));
        return {text, std::strlen(text), false};
    }
    if (field.value == zr::value_kind::octets)
        return {zr::place<void*>(structure, field.offset), zr::octets_length(field, structure), false};
    return {zr::value_at(field, structure, index), 0, false};
}

// Runs an operation of a structure until memory suffices. Where it fails nothing has changed, octet for octet.
template <class Operation>
void with_memory_ending(structure& edited, Operation&& operation) {
    const auto* octets = static_cast<unsigned char*>(edited.get());
    const std::vector<unsigned char> before(octets, octets + edited.type().size);
    structure same(edited.type());
    ASSERT_EQ(zr::copy_record(edited.type(), edited.get(), same.get()), 0);
    size_t n = 0;
    for (bool failed = true; failed;) {
        allocations watched;
        caught_stderr printed;
        watched.fail_allocation(++n);
        const int status = operation();
        failed = watched.failed();
        watched.fail_allocation(0);
        ASSERT_EQ(status, failed ? zr_err_out_of_memory : 0);
        ASSERT_EQ(printed.take(), "");
        if (!failed) break;
        ASSERT_EQ(watched.live(), 0u);
        ASSERT_EQ(std::memcmp(octets, before.data(), before.size()), 0);
        ASSERT_EQ(difference(edited.type(), edited.get(), same.get()), "");
    }
}

// Each value of a random structure goes into an empty one, which is then equal; then one is put in between, replaced
// and taken out again.
TEST(edit, rebuilds_every_record) {
    std::mt19937 random(51);
    size_t lists = 0;
    std::vector<const zr::record_type*> types = all_records();
    for (size_t i = 0, count = types.size(); i < 3 * count; ++i)
        types.push_back(types[i]);
    for (const zr::record_type* type : types) {
        SCOPED_TRACE(type->name);
        structure original(*type), made(*type);
        fill(*type, original.get(), random, {400, 3, true});
        for (const zr::field& field : *type) {
            SCOPED_TRACE(field.name);
            void* const where = made.get();
            if (!zr::has_member(field.value) || field.value == zr::value_kind::fixed_octets) {
                std::memcpy(zr::first_place(field, where), zr::first_place(field, original.get()),
                            zr::has_member(field.value) ? field.place_octets : 0);
                continue;
            }
            const bool places = zr::is_list(field.held) || field.held == zr::holding::slots;
            const uint32_t count = zr::place_count(field, original.get());
            for (uint32_t i = 0; i < count; ++i) {
                const zr::new_value value = value_in(field, original.get(), i);
                if (value.at == nullptr) continue;
                with_memory_ending(made, [&] {
                    return zr::is_list(field.held)
                               ? zr::insert_value(*type, field.offset, where, zr::behind_the_last, value)
                               : zr::set_value(*type, field.offset, where, i, value);
                });
            }
            ASSERT_EQ(zr::set_value(*type, field.offset, where, places ? count : 1, {nullptr, 0, false}),
                      zr_err_bad_argument);
            if (!zr::is_list(field.held) || count == 0) continue;
            ++lists;
            const auto at = static_cast<uint32_t>(random() % count);
            const zr::new_value own = value_in(field, where, count - 1);  // of the structure itself
            with_memory_ending(made, [&] { return zr::insert_value(*type, field.offset, where, at, own); });
            with_memory_ending(
                made, [&] { return zr::set_value(*type, field.offset, where, at, value_in(field, where, 0)); });
            ASSERT_EQ(zr::place_count(field, where), count + 1);
            ASSERT_EQ(zr::insert_value(*type, field.offset, where, count + 2, own), zr_err_bad_argument);
            ASSERT_EQ(zr::erase_values(*type, field.offset, where, at, count + 2 - at), zr_err_bad_argument);
            ASSERT_EQ(zr::erase_values(*type, field.offset, where, at, 1), 0);
        }
        ASSERT_EQ(difference(*type, original.get(), made.get()), "");
        for (const zr::field& field : *type) {
            if (field.held == zr::holding::one) continue;
            const uint32_t count = zr::place_count(field, made.get());
            ASSERT_EQ(zr::erase_values(*type, field.offset, made.get(), 0, count), 0);
            ASSERT_TRUE(zr::used_places(field, made.get()) == 0 || zr::value_at(field, made.get()) == nullptr);
        }
    }
    EXPECT_GT(lists, 40u);
}

TEST(edit, by_the_types) {
    allocations watch;
    {
        zr::decoded<yvprincipal_s_t> principal;
        zr::decoded<sec_id_pa_t> identities;
        zr::decoded<sec_id_t> id;
        ASSERT_EQ(zr::set_text(id.edit(), &sec_id_t::name, "clerk"), 0);
        ASSERT_EQ(zr::set_text(id.edit(), &sec_id_t::name, std::string_view("a\0b", 3)), zr_err_bad_argument);
        ASSERT_EQ(zr::set_text(id.edit(), &sec_id_t::name, std::string_view("\0", 1)), zr_err_bad_argument);
        ASSERT_STREQ(id->name, "clerk");
        ASSERT_EQ(zr::set_text(id.edit(), &sec_id_t::name, id->name + 1), 0);
        ASSERT_EQ(zr::append(identities.edit(), &sec_id_pa_t::ids, *id), 0);
        ASSERT_EQ(zr::insert(identities.edit(), &sec_id_pa_t::ids, 0, std::move(id)), 0);
        EXPECT_EQ(id->name, nullptr);
        ASSERT_EQ(zr::set_text(identities->ids[1], &sec_id_t::name, ""), 0);
        ASSERT_EQ(zr::set(principal.edit(), &yvprincipal_s_t::pa, std::move(identities)), 0);
        std::string names;
        for (const sec_id_pa_t& pa : zr::elements(*principal, &yvprincipal_s_t::pa))
            for (const sec_id_t& each : zr::elements(pa, &sec_id_pa_t::ids))
                names += std::string(each.name) + ";";
        EXPECT_EQ(names, "lerk;;");
        zr::clear(principal.edit(), &yvprincipal_s_t::pa);
        EXPECT_TRUE(zr::elements(*principal, &yvprincipal_s_t::pa).empty());

        zr::decoded<yvaction_group_s_t> group;
        zr::decoded<yvaction_s_t> action;
        action->int_a = 7;
        ASSERT_EQ(zr::set(group.edit(), &yvaction_group_s_t::actions, 30, *action), 0);
        ASSERT_EQ(zr::append(group.edit(), &yvaction_group_s_t::actions, std::move(action)), 0);
        ASSERT_EQ(zr::append(group.edit(), &yvaction_group_s_t::actions, *action), zr_err_out_of_memory);
        ASSERT_EQ(zr::append(group.edit(), &yvaction_group_s_t::actions, std::move(action)), zr_err_out_of_memory);
        ASSERT_EQ(zr::insert(group.edit(), &yvaction_group_s_t::actions, 0, *action), zr_err_bad_argument);
        ASSERT_EQ(zr::erase(group.edit(), &yvaction_group_s_t::actions, 30), 0);
        int sum = 0;
        for (yvaction_s_t& each : zr::elements(group.edit(), &yvaction_group_s_t::actions))
            sum += each.int_a;
        EXPECT_EQ(sum, 7);

        zr::decoded<namevalue_s_t> node;
        for (const char* text : {"a", "b"})
            ASSERT_EQ(zr::append(node.edit(), &namevalue_s_t::values, text), 0);
        ASSERT_EQ(zr::set_text(node.edit(), &namevalue_s_t::values, 1, "c"), 0);
        ASSERT_EQ(zr::append(node.edit(), &namevalue_s_t::children, *node), 0);  // a copy of itself
        ASSERT_EQ(zr::erase(node.edit(), &namevalue_s_t::values, 0, 2), 0);
        EXPECT_EQ(node->values, nullptr);
        for (const namevalue_s_t& child : zr::elements(*node, &namevalue_s_t::children))
            for (std::string_view text : zr::elements(child, &namevalue_s_t::values))
                names += text;
        EXPECT_EQ(names, "lerk;;ac");

        cert_request_in request{};
        unsigned char mine = 7;  // octets of length 0 are absent, and their pointer is not the structure's
        request.body = &mine;
        ASSERT_EQ(zr::set_octets(request, &cert_request_in::body, "\1\2", 2), 0);
        watch.fail_allocation(1);
        EXPECT_EQ(zr::set_octets(request, &cert_request_in::body, "", UINT32_MAX), zr_err_out_of_memory);
        EXPECT_EQ(watch.failed(), 0u);  // so many are not asked for
        watch.fail_allocation(0);
        EXPECT_TRUE(request.body_length == 2 && request.body[1] == 2);
        zr::record<cert_request_in>::type.free(&request);
    }
    EXPECT_EQ(watch.live(), 0u);
}

// Members that are none, and places where nothing can be put or taken out.
TEST(edit, refuses_places_that_are_none) {
    structure original(zr::record<yvaction_group_s_t>::type);
    auto& group = original.as<yvaction_group_s_t>();
    const zr::record_type& type = original.type();
    const yvaction_s_t action{};
    const zr::new_value text{"x", 1, false}, value{&action, 0, false};
    const size_t name = offsetof(yvaction_group_s_t, name), actions = offsetof(yvaction_group_s_t, actions), none = 1;
    using zr::behind_the_last;
    EXPECT_EQ(zr::set_value(type, none, &group, 0, text), zr_err_bad_argument);
    EXPECT_EQ(zr::set_value(type, name, &group, 1, text), zr_err_bad_argument);
    EXPECT_EQ(zr::insert_value(type, none, &group, behind_the_last, text), zr_err_bad_argument);
    EXPECT_EQ(zr::insert_value(type, name, &group, behind_the_last, text), zr_err_bad_argument);
    EXPECT_EQ(zr::erase_values(type, none, &group, 0, 1), zr_err_bad_argument);
    EXPECT_EQ(zr::erase_values(type, name, &group, 0, 1), zr_err_bad_argument);
    EXPECT_EQ(zr::erase_values(type, actions, &group, 33, 0), zr_err_bad_argument);
    EXPECT_EQ(zr::erase_values(type, actions, &group, 30, 3), zr_err_bad_argument);
    EXPECT_EQ(leftover(type, &group), "");
    EXPECT_EQ(zr::insert_value(type, actions, &group, behind_the_last, value), 0);
    EXPECT_EQ(zr::erase_values(type, actions, &group, 0, 32), 0);
    EXPECT_EQ(leftover(type, &group), "");
    // Octets cannot be put where fixed ones are, nor a version.
    uuid_t id{};
    EXPECT_EQ(zr::set_value(zr::record<uuid_t>::type, offsetof(uuid_t, node), &id, 0, {"abcdef", 6, false}),
              zr_err_bad_argument);
    EXPECT_EQ(leftover(zr::record<uuid_t>::type, &id), "");
}

// What is handed over stays the caller's until it is in its place, behind a pointer of its own or in a large array.
TEST(edit, large_elements_and_pointers_with_memory_ending) {
    structure list(zr::record<wide_list_t>::type);
    wide_t wide{};
    wide.third[99] = 7;
    for (size_t i = 0; i < 3; ++i)
        with_memory_ending(list, [&] { return zr::append(list.as<wide_list_t>(), &wide_list_t::elements, wide); });
    EXPECT_EQ(list.as<wide_list_t>().elements[2].third[99], 7);
    size_t found = 0;
    for (const zr::record_type* type : all_records()) {
        for (const zr::field& field : *type) {
            if (field.held != zr::holding::pointer_list) continue;
            ++found;
            structure original(*type), element(*field.record);
            const zr::new_value value{element.get(), 0, true};
            with_memory_ending(original, [&] {
                return zr::insert_value(*type, field.offset, original.get(), zr::behind_the_last, value);
            });
            EXPECT_EQ(zr::stored_count(field, original.get()), 1u);
        }
    }
    EXPECT_EQ(found, 3u);
}

// A guard keeps what it holds when it could not be handed over.
TEST(edit, hands_over_or_not_at_all) {
    zr::decoded<sec_id_pa_t> list;
    zr::decoded<sec_id_t> id;
    ASSERT_EQ(zr::set_text(id.edit(), &sec_id_t::name, "x"), 0);
    {
        allocations watched;
        watched.fail_allocation(1);
        EXPECT_EQ(zr::append(list.edit(), &sec_id_pa_t::ids, std::move(id)), zr_err_out_of_memory);
        EXPECT_STREQ(id->name, "x");
    }
    // The count of this list has 16 bits. Its array moves a few times, not for each element.
    allocations watched;
    sec_id_pa_t many{};
    const sec_id_t none{};
    for (unsigned i = 0; i < UINT16_MAX; ++i) {
        ASSERT_EQ(zr::append(many, &sec_id_pa_t::ids, none), 0);
    }
    EXPECT_EQ(zr::append(many, &sec_id_pa_t::ids, std::move(id)), zr_err_out_of_memory);
    EXPECT_STREQ(id->name, "x");
    EXPECT_EQ(many.count, UINT16_MAX);
    EXPECT_LT(watched.made(), 60u);
    zrAsnFreeObj(many);
    EXPECT_EQ(watched.live(), 0u);
}

TEST(edit, wipes_what_was_secret) {
    secret_search search({"hunter2"});
    zr::decoded<azn_util_password_in_s_t> request;
    for (const char* text : {"hunter2", "another", "hunter2"})
        ASSERT_EQ(zr::set_text(request.edit(), &azn_util_password_in_s_t::str_a, text), 0);
    ASSERT_EQ(zr::set_text(request.edit(), &azn_util_password_in_s_t::str_a, ""), 0);
    EXPECT_EQ(search.found(), 0u);
}

TEST(edit, attributes_by_name) {
    structure made(zr::record<attrlist_s_t>::type);
    auto& list = made.as<attrlist_s_t>();
    for (const char* name : {"a", "b", "a", "c", "a"}) {
        zr::decoded<attr_s_t> attr;
        ASSERT_EQ(zr::set_text(attr.edit(), &attr_s_t::name, name), 0);
        ASSERT_EQ(zr::append(list, &attrlist_s_t::attrs, std::move(attr)), 0);
    }
    with_memory_ending(made, [&] { return zr::set_attribute(list, "d", 4, "x"); });
    with_memory_ending(made, [&] { return zr::set_attribute(list, "b", 4, "x"); });
    ASSERT_EQ(zr::set_attribute(list, "a", 3, "once"), 0);
    std::string names;
    for (const attr_s_t& attr : zr::elements(std::as_const(list), &attrlist_s_t::attrs))
        names += attr.name;
    EXPECT_EQ(names, "abcd");
    ASSERT_NE(zr::find_attribute(list, "a"), nullptr);
    EXPECT_STREQ(zr::find_attribute(list, "a")->values[0].str, "once");
    EXPECT_EQ(zr::remove_attribute(list, "x"), 0u);
    EXPECT_EQ(zr::remove_attribute(list, "a"), 1u);
    EXPECT_EQ(zr::find_attribute(std::as_const(list), "a"), nullptr);
}

}  // namespace
}  // namespace zr_test
