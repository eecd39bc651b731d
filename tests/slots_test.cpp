// The order of the virtual operations, on both word sizes: classes built by others must meet the same tables.
#include "support/slots.h"

#include <gtest/gtest.h>

#include <vector>

#include "asn1/asn_yvobjs.h"
#include "asn1/asnbase.h"
#include "asn1/asnstrng.h"
#include "asn1/zrasnbase.h"
#include "asn1/zrasnutf8.h"
#include "base_idls/zrnbase_asn.h"

namespace zr_test {
namespace {

using object = zr_asn_object;

// One overload of a member function.
template <class Signature, class Class>
auto one_of(Signature Class::*function) {
    return function;
}

TEST(slots, object) {
    // clang-format off
    const int table[] = {
        slot(&object::decode_value), slot(&object::encode_value), slot(&object::check_valid),
        slot(&object::invalidate_encoding), slot(&object::invalidate_value), slot(&object::set_value_valid),
        slot(&object::check_type), slot(&object::set_default_value),
        slot(one_of<int(zr_buffer_t&) const>(&object::get_encoding)), slot(one_of<int() const>(&object::get_encoding)),
        slot(&object::emptyi), slot(&object::get_child_count), slot(&object::encoding_primitive_permitted),
        slot(&object::encoding_constructed_permitted), slot(&object::encoding_indefinite_permitted),
        slot(&object::is_constructed), slot(&object::is_indefinite_length), slot(&object::is_polymorphic),
        slot(&object::should_generate_constructed), slot(&object::set_class), slot(&object::set_tag),
        slot(&object::display), slot(&object::empty), slot(&object::normalize), slot(&object::is_optional),
        slot(&object::is_defaultable), slot(&object::is_encoding_valid), slot(&object::get_default_value),
        slot(&object::is_default_value), slot(&object::is_valid), slot(&object::is_present),
        31, 32,  // the destructors
        slot(&object::set_secure), slot(&object::asnread), slot(&object::asnwrite), slot(&object::operator==),
        slot(&object::set_optional), slot(&object::set_empty_permitted),
        slot(one_of<int(int) const>(&object::check_encode_flags)),
        slot(one_of<int() const>(&object::check_encode_flags)), slot(&object::display_state_flags)
    };
    // clang-format on
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
    using text = zrasnUTF8String;
    const int first = slot_count<zr_asn_UTF8String>();
    EXPECT_EQ(slot(one_of<int(char*)>(&text::set_value)), first);
    EXPECT_EQ(slot(one_of<int(unsigned char*)>(&text::set_value)), first + 1);
    EXPECT_EQ(slot(one_of<int(char*&)>(&text::get_value)), first + 2);
    EXPECT_EQ(slot(one_of<int(unsigned char*&)>(&text::get_value)), first + 3);
    EXPECT_EQ(slot(one_of<int()>(&text::set_default_value)), first + 4);
    EXPECT_EQ(slot_count<text>(), first + 5);
    EXPECT_EQ(slot(&zr_r_buffer_t::set), 0);
    EXPECT_EQ(slot(&zr_r_buffer_t::reset), 1);
}

TEST(slots, charstring) {
    using string = zr_asn_charstring;
    using text = int(char*);
    using cursor = int(zr_r_buffer_t&);
    // clang-format off
    const int table[] = {
        slot(&string::check_accepted_codeset), slot(&string::check_preferred_codeset), slot(&string::set_codeset),
        slot(&string::get_value_C), slot(&string::set_value_C), slot(&string::get_value_IA5),
        slot(one_of<int(char*, int)>(&string::set_value_IA5)),
        slot(one_of<int(zr_r_buffer_t&, int)>(&string::set_value_IA5)), slot(&string::get_value_printable),
        slot(one_of<text>(&string::set_value_printable)), slot(one_of<cursor>(&string::set_value_printable)),
        slot(&string::get_value_visible), slot(one_of<text>(&string::set_value_visible)),
        slot(one_of<cursor>(&string::set_value_visible)), slot(&string::get_value_T61),
        slot(one_of<text>(&string::set_value_T61)), slot(one_of<cursor>(&string::set_value_T61)),
        slot(&string::get_value_BMP), slot(one_of<int(unsigned short*)>(&string::set_value_BMP)),
        slot(one_of<cursor>(&string::set_value_BMP)), slot(&string::get_value_Univ),
        slot(one_of<int(unsigned int*)>(&string::set_value_Univ)), slot(one_of<cursor>(&string::set_value_Univ)),
        slot(&string::get_value_UTF8), slot(one_of<text>(&string::set_value_UTF8)),
        slot(one_of<cursor>(&string::set_value_UTF8)), slot(&string::get_codeset)
    };
    // clang-format on
    int expected = slot_count<zr_asn_octetstring>();
    for (const int found : table)
        EXPECT_EQ(found, expected++);
    EXPECT_EQ(slot_count<string>(), expected);
    EXPECT_EQ(slot_count<zr_asn_directoryString>(), expected);
    EXPECT_EQ(slot_count<zr_asn_UTF8String>(), expected);
}

template <class... Classes>
std::vector<int> slot_counts() {
    return {slot_count<Classes>()...};
}

TEST(slots, nothing_else_is_virtual) {
    using counts = std::vector<int>;
    EXPECT_EQ(slot_count<zr_r_buffer_t>(), 2);
    EXPECT_EQ(slot_count<zr_buffer_t>(), 4);  // set, reset and the destructors
    EXPECT_EQ((slot_counts<zr_asn_primitive, zr_asn_integer, zr_asn_boolean, zr_asn_null, zr_asn_nothing>()),
              counts(5, 42));
    EXPECT_EQ((slot_counts<zr_asn_octetstring, zr_asn_any, zr_asn_bitstring, zr_asn_namedbits>()), counts(4, 42));
    EXPECT_EQ((slot_counts<zrasn_integer, zrasn_octetstring>()), counts(2, 43));
    using array = zr_asn_arrayof<zr_asn_integer>;
    EXPECT_EQ((slot_counts<zr_asn_composite, zr_asn_sequence, array>()), counts(3, 45));
    EXPECT_EQ((slot_counts<zr_asn_choice, array::cherce, zr_asnbase, zr_v37_asnbase, asn_uuid_t>()), counts(5, 46));
    EXPECT_EQ((slot_counts<zr_asn_yvobj_update_t, zr_asn_yvobj_update_list_t, zr_asn_cert_request_in>()),
              counts(3, 46));
    EXPECT_EQ(slot_count<zr_asn_sequenceof<zr_asn_integer>>(), 48);
}

}  // namespace
}  // namespace zr_test
