#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <numeric>
#include <random>

#include "asn1/asnstrng.h"
#include "support/ber.h"
#include "support/samples.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

TEST(choice, every_alternative_starts_where_the_first_did) {
    zr_asn_choice object(zr_normal);
    zr_asn_sequence open_ended(zr_normal);
    zr_asn_integer number(zr_normal);
    zr_asn_null nothing(zr_normal);
    open_ended.register_child(&number);
    object.register_child(&open_ended);
    object.register_child(&nothing);
    EXPECT_EQ(read(object, "30 80 02 01 07 05 00"), zr_err_no_match);  // the first stops before the NULL

    zr_asn_choice empty(zr_normal);
    empty.set_optional(1);
    EXPECT_EQ(read(empty, "80 01 05"), zr_err_no_match);

    // A hook may skip octets; a failure goes back before them.
    object.set_preread(
        [](zr_asn_object*, zr_r_buffer_t& input) { input.move_to(input.current() + 1, input.remaining() - 1); });
    const auto good = read_from(object, "ff 05 00");
    EXPECT_EQ(good.status, 0);
    EXPECT_EQ(good.consumed, 3);
    const auto bad = read_from(object, "ff 01 00");
    EXPECT_EQ(bad.status, zr_err_no_match);
    EXPECT_EQ(bad.consumed, 0);
}

TEST(choice, an_enclosing_sequence_skips_it_or_refuses) {
    for (int optional : {0, 1}) {
        sample_choice first;
        zr_asn_boolean second(zr_normal);
        zr_asn_sequence both(zr_normal);
        first.set_optional(optional);
        both.register_child(&first);
        both.register_child(&second);
        EXPECT_EQ(read(both, "30 03 01 01 ff"), optional != 0 ? 0 : zr_err_no_match);
        EXPECT_EQ(read(both, "30 06 80 01 05 01 01 00"), 0);
        first.number.set_value(5);  // what was read of an INTEGER can be written, but say so
        EXPECT_EQ(written(both), "30 06 80 01 05 01 01 00");
    }
}

TEST(choice, selecting_and_presence) {
    sample_choice object;
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    EXPECT_EQ(object.selected(), -1);
    EXPECT_EQ(written(object), "275063208");
    EXPECT_EQ(object.select(3), zr_err_bad_alternative);
    EXPECT_EQ(object.select(~0U), zr_err_bad_alternative);

    object.number.set_value(5);
    EXPECT_EQ(object.is_present(), 0);
    EXPECT_EQ(object.select(0), 0);
    EXPECT_EQ(written(parent), "30 03 80 01 05");
    EXPECT_EQ(object.is_encoding_valid(), 1);
    EXPECT_EQ(parent.check_encode_flags(), 1);
    EXPECT_EQ(object.select(0), 0);
    EXPECT_EQ(parent.is_encoding_valid(), 1);

    EXPECT_EQ(object.select(1), 0);  // no value yet
    EXPECT_EQ(parent.is_encoding_valid() + object.is_encoding_valid(), 0);
    EXPECT_EQ(parent.is_present() + object.is_present(), 0);
    EXPECT_EQ(written(object), "275063200");
    object.flag.set_value(1);
    EXPECT_EQ(written(parent), "30 03 81 01 ff");
    object.number.set_value(6);  // not selected
    EXPECT_EQ(written(parent), "30 03 81 01 ff");

    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(object.selected(), 1);
    EXPECT_EQ(object.flag.is_present(), 0);
    EXPECT_EQ(written(parent), "275063200");
    object.set_optional(1);
    EXPECT_EQ(written(object), "");
}

TEST(choice, normalizes_what_is_selected) {
    struct text_or_number : zr_asn_choice {
        text_or_number() : zr_asn_choice(zr_normal) {
            register_child(&text);
            register_child(&number);
        }
        zr_asn_directoryString text{zr_normal};
        zr_asn_integer number{zr_normal};
    } object;
    EXPECT_EQ(object.normalize(), 0);
    object.select(0);
    EXPECT_EQ(object.normalize(), zr_err_value_absent);
    object.select(1);
    EXPECT_EQ(object.normalize(), 0);
}

TEST(choice, is_default_when_complete_encodings_are_equal) {
    sample_choice object;
    auto* standard = new sample_choice;
    standard->select(0);
    standard->number.set_value(-1);
    object.set_default_value(standard);
    EXPECT_EQ(object.is_default_value(), 1);  // absent
    EXPECT_EQ(written(object), "");
    object.select(1);
    object.flag.set_value(1);  // contents ff like the default's, identifier another
    EXPECT_EQ(object.is_default_value(), 0);
    EXPECT_EQ(written(object), "81 01 ff");
    object.number.set_value(-1);
    object.select(0);
    EXPECT_EQ(object.is_default_value(), 1);
    EXPECT_EQ(written(object), "");
    standard->select(2);  // the default has no value any more
    EXPECT_EQ(object.is_default_value(), 0);
    EXPECT_EQ(written(object), "80 01 ff");
    EXPECT_EQ(read(object, "05 00"), 0);
    EXPECT_EQ(object.is_present(), 0);
}

TEST(choice, is_default_whatever_the_caches_hold) {
    for (const int filled : {0, 1, 2, 3}) {
        sample_choice object;
        auto* standard = new sample_choice;
        for (sample_choice* each : {&object, standard}) {
            each->select(1);
            each->flag.set_value(1);
        }
        object.set_default_value(standard);
        if ((filled & 1) != 0) static_cast<void>(object.flag.get_encoding());
        if ((filled & 2) != 0) static_cast<void>(standard->flag.get_encoding());
        EXPECT_EQ(object.is_encoding_valid(), filled & 1);
        EXPECT_EQ(object.is_default_value(), 1) << filled;
        object.flag.set_value(0);
        EXPECT_EQ(object.is_default_value(), 0) << filled;
    }
    sample_choice nothing;  // is not even the default that selects nothing either
    nothing.set_default_value(new sample_choice);
    nothing.set_value_valid();
    EXPECT_EQ(nothing.is_default_value(), 0);
    EXPECT_EQ(written(nothing), "275063208");
}

// How often a CHOICE is asked while n of them are read, whose first alternative becomes present and then fails, and
// while n members that are present are set again in any order: at most a few times for each.
TEST(choice, cost_is_linear) {
    static long asked;
    struct either : zr_asn_choice {
        either() : zr_asn_choice(zr_normal) {
            shorter.register_child(&some);
            longer.register_child(&bits);
            longer.register_child(&flag);
            register_child(&shorter);
            register_child(&longer);
        }
        int is_valid(int deep) const override { return ++asked, zr_asn_choice::is_valid(deep); }
        int is_present() const override { return ++asked, zr_asn_choice::is_present(); }
        zr_asn_sequence shorter{zr_normal}, longer{zr_normal};
        zr_asn_namedbits some{zr_normal}, bits{zr_normal};
        zr_asn_boolean flag{zr_normal};
    };
    constexpr size_t n = 3000;
    for (const int optional : {0, 1}) {
        for (const int empty_permitted : {0, 1}) {
            std::deque<either> members(n);
            zr_asn_sequence sequence(zr_normal);
            sequence.set_empty_permitted(empty_permitted);
            std::string octets = "30 82 69 78";
            for (either& each : members) {
                each.set_optional(optional);
                sequence.register_child(&each);
                octets += " 30 07 03 02 07 80 01 01 ff";
            }
            std::vector<size_t> order(n);
            std::iota(order.begin(), order.end(), 0);
            std::shuffle(order.begin(), order.end(), std::mt19937(1));
            asked = 0;
            EXPECT_EQ(read(sequence, octets), 0);
            EXPECT_LE(asked, 20 * static_cast<long>(n));
            asked = 0;
            for (const size_t at : order)
                members[at].bits.set_bit(1, 1);
            for (size_t at = n; at-- != 0;)
                members[at].bits.set_bit(2, 1);
            EXPECT_LE(asked, 20 * static_cast<long>(n));
            EXPECT_EQ(sequence.is_present(), 1);
        }
    }
}

TEST(choice, forbidden_operations) {
    sample_choice object;
    zr_asn_arrayof<zr_asn_integer> array(zr_normal);
    EXPECT_EQ(thrown([&] { object.set_tag(1); }), "Attempt to change tag of ASN.1 CHOICE object");
    EXPECT_EQ(thrown([&] { array.set_tag(1); }), "Attempt to change tag of ASN.1 CHOICE object");
    EXPECT_EQ(object.get_tag(), 0U);
    EXPECT_EQ(object.set_tag_unchecked(7), 0);
    EXPECT_EQ(object.get_tag(), 7U);
    EXPECT_EQ(object.is_polymorphic(), 1);
    zr_buffer_t buffer(zr_normal);
    EXPECT_EQ(thrown([&] { object.decode_value(buffer, 0); }),
              "unsupported 275063191: Error: asn_choice::decode_value called in src/asn1/asnbase");
    EXPECT_EQ(thrown([&] { object.encode_value(buffer); }),
              "unsupported 275063191: Error: asn_choice::encode_value called in src/asn1/asnbase");
}

TEST(choice, state_flags_mark_the_selected_alternative) {
    sample_choice object;
    object.select(1);
    object.flag.set_value(0);
    zr_buffer_t text(zr_normal);
    object.display_state_flags(text, 1);
    const std::string absent = "(valid=N, present=N, optional=N, defaultable=N, enc_valid=N)\n";
    const std::string present = "(valid=Y, present=Y, optional=N, defaultable=N, enc_valid=N)\n";
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(text.data()), text.length()),
              " CHOICE" + present + "   INTEGER" + absent + "  SELECTED:\n   BOOLEAN" + present + "   SEQUENCE" +
                  absent + "     INTEGER" + absent);
}

// Which hooks ran, with the statuses that the later ones saw.
std::string hooks_log;

void log_hooks(zr_asn_object& object) {
    hooks_log.clear();
    object.set_preread([](zr_asn_object*, zr_r_buffer_t&) { hooks_log += "pre "; });
    object.set_postread(
        [](zr_asn_object*, zr_r_buffer_t&, int status) { hooks_log += "post(" + std::to_string(status) + ") "; });
}

TEST(choice, hooks) {
    sample_choice object;
    log_hooks(object);
    read(object, "81 01 ff");
    read(object, "85 00");
    object.set_optional(1);
    read(object, "85 00");
    EXPECT_EQ(hooks_log, "pre post(0) pre post(275063204) pre post(0) ");
}

TEST(any, setting_a_value_again_keeps_the_cache) {
    zr_asn_any object(zr_normal);
    object.set_tag(4);
    const unsigned char octets[] = {1, 2};
    for (const unsigned int length : {2U, 1U}) {
        EXPECT_EQ(object.set_value(octets, length), 0);
        EXPECT_EQ(written(object), "04 02 01 02");
    }
    object.invalidate_encoding();
    EXPECT_EQ(written(object), "04 01 01");
}

TEST(any, a_failed_read_keeps_the_form) {
    zr_asn_any object(zr_normal);
    EXPECT_EQ(read(object, "10 00"), 0);
    EXPECT_EQ(read(object, "30 80 00 00"), zr_err_indefinite_length);
    EXPECT_EQ(object.set_value(nullptr, 0), 0);
    EXPECT_EQ(written(object), "10 00");
    zr_buffer_t contents(zr_normal);
    contents.append("x");
    EXPECT_EQ(object.decode_value(contents, 1), 0);  // what calls it makes the object present
    EXPECT_EQ(object.is_present(), 0);
}

TEST(any, binding_makes_enclosing_encodings_stale) {
    zr_asn_any object(zr_normal);
    zr_asn_integer number(zr_normal);
    zr_asn_null nothing(zr_normal);
    zr_asn_sequence parent(zr_normal);
    object.set_optional(1);
    parent.register_child(&object);
    parent.register_child(&nothing);
    EXPECT_EQ(written(parent), "30 02 05 00");
    number.set_value(5);
    object.set_syntax(&number);
    EXPECT_EQ(written(parent), "30 05 02 01 05 05 00");
    object.set_syntax(nullptr);
    EXPECT_EQ(written(parent), "30 02 05 00");
}

TEST(any, bound_to_a_syntax) {
    zr_asn_any object(zr_normal);
    zr_asn_integer number(zr_normal);
    zr_asn_boolean flag(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&object);
    const unsigned char raw[] = {1};

    // Presence is the reverse of the syntax object's.
    EXPECT_EQ(object.set_syntax(&number), 0);
    EXPECT_EQ(object.is_present(), 1);
    number.set_value(5);
    EXPECT_EQ(object.is_present(), 0);
    EXPECT_EQ(parent.is_present(), 0);
    object.set_value_valid();
    EXPECT_EQ(written(parent), "30 03 02 01 05");

    EXPECT_EQ(object.set_value(raw, 1), zr_err_syntax_bound);
    EXPECT_EQ(contents(object), std::to_string(zr_err_syntax_bound));
    zr_buffer_t buffer(zr_normal);
    EXPECT_EQ(object.encode_value(buffer), zr_err_syntax_bound);
    EXPECT_EQ(object.decode_value(buffer, 0), zr_err_syntax_bound);
    EXPECT_EQ(written(object), "02 01 05");

    // Another one: the first is released and cleared, the enclosing encoding is stale.
    flag.set_value(1);
    EXPECT_EQ(object.set_syntax(&flag), 0);
    EXPECT_EQ(number.get_parent(), nullptr);
    EXPECT_EQ(number.is_present(), 0);
    EXPECT_EQ(flag.get_parent(), &object);
    for (const int value : {1, 0}) {
        flag.set_value(value);
        object.set_value_valid();
        EXPECT_EQ(written(parent), value != 0 ? "30 03 01 01 ff" : "30 03 01 01 00");
    }
    EXPECT_EQ(read(parent, "30 03 02 01 05"), zr_err_no_match);
    EXPECT_EQ(read(parent, "30 03 01 01 05"), 0);
    EXPECT_EQ(written(parent), "30 03 01 01 ff");

    EXPECT_EQ(object.set_syntax(nullptr), 0);
    EXPECT_EQ(flag.get_parent(), nullptr);
    EXPECT_EQ(read(parent, "30 03 02 01 05"), 0);
    EXPECT_EQ(contents(object), "05");
    EXPECT_EQ(written(parent), "30 03 02 01 05");
}

TEST(any, hooks) {
    zr_asn_any object(zr_normal);
    static zr_asn_integer number(zr_normal);
    log_hooks(object);
    object.set_preparse([](zr_asn_any*) {
        hooks_log += "parse ";
        return 0;
    });
    read(object, "04 00");
    EXPECT_EQ(hooks_log, "pre parse pre post(0) post(0) ");

    hooks_log.clear();
    object.set_preparse([](zr_asn_any* any) { return any->set_syntax(&number); });
    read(object, "04 00");
    EXPECT_EQ(hooks_log, "pre post(275063204) ");
    EXPECT_EQ(read(object, "02 01 05"), 0);

    hooks_log.clear();
    object.set_preparse([](zr_asn_any*) { return 77; });
    EXPECT_EQ(read(object, "04 00"), 77);
    EXPECT_EQ(hooks_log, "pre ");

    object.set_syntax(nullptr);
    object.set_preencode([](zr_asn_any* any) {
        any->set_syntax(&number);
        return number.set_value(6);
    });
    EXPECT_EQ(written(object), "02 01 06");
    object.set_preencode([](zr_asn_any*) { return 78; });
    EXPECT_EQ(written(object), "78");
    object.set_syntax(nullptr);
}

TEST(any, mode_1_alone_is_handed_on) {
    for (security_t mode : {zr_normal, zr_secure, zr_local_code_set}) {
        zr_asn_any before(zr_normal), after(mode);
        zr_asn_integer first(zr_normal), second(zr_normal);
        before.set_syntax(&first);
        before.set_secure(mode);
        after.set_syntax(&second);
        EXPECT_EQ(first.get_secure(), mode == zr_secure ? zr_secure : zr_normal);
        EXPECT_EQ(second.get_secure(), first.get_secure());
    }
}

}  // namespace
}  // namespace zr_test
