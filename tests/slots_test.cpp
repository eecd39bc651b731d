// The order of the virtual operations, on both word sizes: classes built by others must meet the same tables.
#include "support/slots.h"

#include <gtest/gtest.h>

#include "asn1/zrasnbase.h"
#include "base_idls/zrnbase_asn.h"

namespace {

using zr_test::slot;
using zr_test::slot_count;
using object = zr_asn_object;

// One overload of a member function.
template <class Signature, class Class>
auto one_of(Signature Class::*function) {
    return function;
}

TEST(slots, object) {
    const int table[] = {
        slot(&object::decode_value),
        slot(&object::encode_value),
        slot(&object::check_valid),
        slot(&object::invalidate_encoding),
        slot(&object::invalidate_value),
        slot(&object::set_value_valid),
        slot(&object::check_type),
        slot(&object::set_default_value),
        slot(one_of<int(zr_buffer_t&) const>(&object::get_encoding)),
        slot(one_of<int() const>(&object::get_encoding)),
        slot(&object::emptyi),
        slot(&object::get_child_count),
        slot(&object::encoding_primitive_permitted),
        slot(&object::encoding_constructed_permitted),
        slot(&object::encoding_indefinite_permitted),
        slot(&object::is_constructed),
        slot(&object::is_indefinite_length),
        slot(&object::is_polymorphic),
        slot(&object::should_generate_constructed),
        slot(&object::set_class),
        slot(&object::set_tag),
        slot(&object::display),
        slot(&object::empty),
        slot(&object::normalize),
        slot(&object::is_optional),
        slot(&object::is_defaultable),
        slot(&object::is_encoding_valid),
        slot(&object::get_default_value),
        slot(&object::is_default_value),
        slot(&object::is_valid),
        slot(&object::is_present),
        31,
        32,  // the destructors
        slot(&object::set_secure),
        slot(&object::asnread),
        slot(&object::asnwrite),
        slot(&object::operator==),
        slot(&object::set_optional),
        slot(&object::set_empty_permitted),
        slot(one_of<int(int) const>(&object::check_encode_flags)),
        slot(one_of<int() const>(&object::check_encode_flags)),
        slot(&object::display_state_flags),
    };
    int expected = 0;
    for (const int found : table)
        EXPECT_EQ(found, expected++);
    EXPECT_EQ(expected, 42);
}

TEST(slots, operations_that_subclasses_add) {
    EXPECT_EQ(slot(&zr_asn_composite::register_child), 42);
    EXPECT_EQ(slot(&zr_asn_composite::register_child_before), 43);
    EXPECT_EQ(slot(&zr_asn_composite::get_empty_permitted), 44);
    EXPECT_EQ(slot(&zr_asn_choice::set_tag_unchecked), 45);
    EXPECT_EQ(slot(&zr_asn_sequenceof<zr_asn_integer>::delete_child), 45);
    EXPECT_EQ(slot(&zr_asn_sequenceof<zr_asn_integer>::add_child), 46);
    EXPECT_EQ(slot(&zr_asn_sequenceof<zr_asn_integer>::add_child_before), 47);
    EXPECT_EQ(slot(one_of<int()>(&zr_asnbase::set_default_value)), 45);
    EXPECT_EQ(slot(one_of<int()>(&zrasn_integer::set_default_value)), 42);
    EXPECT_EQ(slot(one_of<int()>(&zrasn_octetstring::set_default_value)), 42);
    EXPECT_EQ(slot(&zr_r_buffer_t::set), 0);
    EXPECT_EQ(slot(&zr_r_buffer_t::reset), 1);
}

TEST(slots, nothing_else_is_virtual) {
    EXPECT_EQ(slot_count<zr_r_buffer_t>(), 2);
    EXPECT_EQ(slot_count<zr_buffer_t>(), 4);  // set, reset and the destructors
    EXPECT_EQ(slot_count<zr_asn_primitive>(), 42);
    EXPECT_EQ(slot_count<zr_asn_integer>(), 42);
    EXPECT_EQ(slot_count<zr_asn_boolean>(), 42);
    EXPECT_EQ(slot_count<zr_asn_null>(), 42);
    EXPECT_EQ(slot_count<zr_asn_nothing>(), 42);
    EXPECT_EQ(slot_count<zr_asn_octetstring>(), 42);
    EXPECT_EQ(slot_count<zr_asn_composite>(), 45);
    EXPECT_EQ(slot_count<zr_asn_sequence>(), 45);
    EXPECT_EQ(slot_count<zr_asn_choice>(), 46);
    EXPECT_EQ(slot_count<zr_asn_any>(), 42);
    EXPECT_EQ(slot_count<zr_asn_sequenceof<zr_asn_integer>>(), 48);
    EXPECT_EQ(slot_count<zr_asn_arrayof<zr_asn_integer>>(), 45);
    EXPECT_EQ(slot_count<zr_asn_arrayof<zr_asn_integer>::cherce>(), 46);
    EXPECT_EQ(slot_count<zr_asn_bitstring>(), 42);
    EXPECT_EQ(slot_count<zr_asn_namedbits>(), 42);
    EXPECT_EQ(slot_count<zr_asnbase>(), 46);
    EXPECT_EQ(slot_count<zr_v37_asnbase>(), 46);
    EXPECT_EQ(slot_count<asn_uuid_t>(), 46);
    EXPECT_EQ(slot_count<zrasn_integer>(), 43);
    EXPECT_EQ(slot_count<zrasn_octetstring>(), 43);
}

}  // namespace
