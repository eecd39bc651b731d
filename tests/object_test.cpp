// What every object shares: identifiers and lengths, reading with its statuses and cursor, optional and default values,
// hooks, staleness, texts.
#include "asn1/asnbase/object.h"

#include <gtest/gtest.h>

#include <climits>

#include "asn1/zrasnbase.h"
#include "support/allocations.h"
#include "support/ber.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

// A type that takes any contents, and tells how it was asked.
struct probe : zr_asn_object {
    explicit probe(security_t secure = zr_normal) : zr_asn_object(secure) {
        set_identity(secure, 4, "PROBE");
        permit_forms(1, 1, 1);
    }
    int decode_value(zr_r_buffer_t& octets, unsigned int len) override {
        ++decoded;
        length_seen = len;
        if (throws) throw zr_asn_memexception("", 0, "", zr_err_out_of_memory);
        unsigned char* at = nullptr;
        if (is_indefinite_length() != 0) {
            while (octets.remaining() != 0 && check_EOC(octets) == 0)
                EXPECT_TRUE(octets.take(1, at));
        } else {
            EXPECT_TRUE(octets.take(len, at));
        }
        return decode_status;
    }
    int encode_value(zr_buffer_t& output) const override {
        ++encoded;
        output.append(text.c_str());
        return encode_status;
    }
    int check_valid(int) override { return ++checked, 0; }
    void set(const char* value) {
        text = value;
        invalidate_encoding();
        set_value_valid();
    }
    using zr_asn_object::generate_constructed_;
    using zr_asn_object::permit_forms;
    using zr_asn_object::set_type_name;

    std::string text;
    int decode_status = 0, encode_status = 0;
    bool throws = false;
    int decoded = 0, checked = 0;
    mutable int encoded = 0;
    unsigned int length_seen = 99;
};

TEST(object, identifiers) {
    // clang-format off
    static const struct { int cls; unsigned int tag; int constructed; const char* octets; } table[] = {
        {0, 0, 0, "00"}, {0, 30, 0, "1e"}, {0, 31, 0, "1f 1f"}, {1, 30, 1, "7e"}, {3, 5, 1, "e5"},
        {2, 127, 0, "9f 7f"}, {2, 128, 1, "bf 81 00"}, {0, 16383, 0, "1f ff 7f"}, {0, 16384, 0, "1f 81 80 00"},
        {0, 0x1FFFFF, 0, "1f ff ff 7f"}, {0, 0x200000, 0, "1f 81 80 80 00"}, {0, 0x0FFFFFFF, 0, "1f ff ff ff 7f"},
        {0, 0x10000000, 0, "1f 81 80 80 80 00"}, {3, 0xFFFFFFFF, 0, "df 8f ff ff ff 7f"},
        // A class outside 0 to 3 is universal.
        {4, 1, 0, "01"}, {-1, 1, 1, "21"}, {5, 1, 0, "01"}, {256, 4, 0, "04"}, {INT_MIN, 4, 0, "04"}
    };
    // clang-format on
    for (const auto& row : table) {
        probe object;
        object.set_class(row.cls);
        EXPECT_EQ(object.get_class(), row.cls);
        object.set_tag(row.tag);
        object.generate_constructed_ = row.constructed;
        zr_buffer_t output(zr_normal);
        EXPECT_EQ(object.write_type(output), 0);
        EXPECT_EQ(hex(output), row.octets);
    }
}

TEST(object, lengths) {
    // clang-format off
    static const struct { unsigned int length; const char* octets; } table[] = {
        {0, "00"}, {127, "7f"}, {128, "81 80"}, {255, "81 ff"}, {256, "82 01 00"}, {65535, "82 ff ff"},
        {65536, "83 01 00 00"}, {0xFFFFFF, "83 ff ff ff"}, {0x1000000, "84 01 00 00 00"}
    };
    // clang-format on
    for (const auto& row : table) {
        probe object;
        object.set(std::string(row.length, 'x').c_str());
        zr_buffer_t output(zr_normal);
        EXPECT_EQ(object.write_length(output), zr_err_bad_contents);  // stale
        EXPECT_EQ(output.length(), 0u);
        ASSERT_EQ(object.get_encoding(), 0);
        EXPECT_EQ(object.write_length(output), 0);
        EXPECT_EQ(hex(output), row.octets);
    }
}

std::string hooks_seen;

TEST(object, reading) {
    enum : unsigned { cons = 1, indef = 2, prim = 4, all = 7, opt = 8, def = 16, refuse = 32 };
    // clang-format off
    static const struct {
        const char* octets; unsigned int how; int status; long consumed; int present, constructed, indefinite, decoded;
    } table[] = {
        {"04 02 41 42 05", all, 0, 4, 1, 0, 0, 1}, {"24 02 41 42", all, 0, 4, 1, 1, 0, 1},
        {"24 80 41 00 00 05", all, 0, 5, 1, 1, 1, 1}, {"04 80 00 00", all, 0, 4, 1, 0, 1, 1},
        {"04 81 02 41 42", all, 0, 5, 1, 0, 0, 1},
        // No identifier, or another: absent when that is permitted.
        {"", all, zr_err_data_ends_early, 0, 0, 0, 0, 0}, {"", all | opt, 0, 0, 0, 0, 0, 0},
        {"", all | def, 0, 0, 0, 0, 0, 0}, {"05 00", all, zr_err_no_match, 0, 0, 0, 0, 0},
        {"44 00", all, zr_err_no_match, 0, 0, 0, 0, 0}, {"00 00", all, zr_err_no_match, 0, 0, 0, 0, 0},
        {"05 00", all | opt, 0, 0, 0, 0, 0, 0}, {"84 00", all | def, 0, 0, 0, 0, 0, 0},
        {"1f", all, zr_err_data_ends_early, 0, 0, 0, 0, 0}, {"1f", all | opt, 0, 0, 0, 0, 0, 0},
        // With its own identifier everything wrong is an error, also for what may be absent.
        {"24 00", prim | opt, zr_err_constructed_form, 0, 0, 1, 0, 0},
        {"04 00", cons | indef | def, zr_err_primitive_form, 0, 0, 0, 0, 0},
        {"04", all, zr_err_data_ends_early, 0, 0, 0, 0, 0},
        {"04 82 01", all | opt, zr_err_data_ends_early, 0, 0, 0, 0, 0},
        {"24 80 00 00", prim | cons, zr_err_indefinite_length, 0, 0, 1, 1, 0},
        {"04 03 41 42", all, zr_err_data_ends_early, 0, 0, 0, 0, 0},
        {"04 84 ff ff ff ff 41", all | opt, zr_err_data_ends_early, 0, 0, 0, 0, 0},
        {"04 02 41 42", all | refuse, zr_err_bad_contents, 0, 0, 0, 0, 1},
        {"24 80 41 00 00", all | refuse | opt, zr_err_bad_contents, 0, 0, 1, 1, 1},
        // Without end-of-contents octets the cursor stays behind the contents.
        {"24 80 41 42", all, zr_err_bad_contents, 4, 0, 1, 1, 1},
        {"24 80 41 00", all | opt, zr_err_bad_contents, 4, 0, 1, 1, 1}
    };
    // clang-format on
    for (const auto& row : table) {
        SCOPED_TRACE(testing::Message() << row.octets << ", how " << row.how);
        probe parent, object;
        object.permit_forms((row.how & prim) != 0, (row.how & cons) != 0, (row.how & indef) != 0);
        object.set_optional((row.how & opt) != 0);
        if ((row.how & def) != 0) object.set_default_value(new probe);
        if ((row.how & refuse) != 0) object.decode_status = zr_err_bad_contents;
        object.set_parent(&parent);
        object.set("old");
        ASSERT_EQ(object.get_encoding(), 0);
        object.set_preread([](zr_asn_object* o, zr_r_buffer_t& at) {
            const bool cleared = o->is_present() + o->is_encoding_valid() + o->is_constructed() == 0;
            hooks_seen = (cleared ? "" : "not cleared: ") + hex(at) + " | ";
        });
        object.set_postread([](zr_asn_object*, zr_r_buffer_t& at, int status) {
            hooks_seen += hex(at) + " | " + std::to_string(status);
        });
        const int checked = parent.checked;
        input octets(row.octets);
        EXPECT_EQ(object.asnread(octets), row.status);
        EXPECT_EQ(octets.consumed(), row.consumed);
        EXPECT_EQ(hooks_seen, std::string(row.octets) + " | " + hex(octets) + " | " + std::to_string(row.status));
        EXPECT_EQ(object.is_present(), row.present);
        EXPECT_EQ(object.is_encoding_valid(), 0);
        EXPECT_EQ(object.is_constructed(), row.constructed);
        EXPECT_EQ(object.is_indefinite_length(), row.indefinite);
        EXPECT_EQ(object.decoded, row.decoded);
        EXPECT_EQ(object.get_tag(), 4u);
        EXPECT_GT(parent.checked, checked);
    }
    probe object;
    object.throws = true;
    object.set("old");
    input octets("04 01 41");
    EXPECT_THROW(object.asnread(octets), zr_asn_memexception);
    EXPECT_EQ(octets.consumed(), 0);
    EXPECT_EQ(object.is_present(), 0);
}

TEST(object, high_tag_numbers_stay_inside_the_octets) {
    probe object;
    object.set_tag(8065);
    // The identifier octet is read again as the length.
    for (const char* octets : {"3f 81 05", "3f 81", "1f 1f", "3f 81 05 41 42 43 44"}) {
        const auto result = read_from(object, octets);
        EXPECT_NE(result.status, 0);
        EXPECT_EQ(result.consumed, 0);
    }
    std::vector<unsigned char> octets = bytes("3f 81 05");
    octets.resize(3 + 63);
    EXPECT_EQ(read_from(object, octets).status, zr_err_data_ends_early);  // 62 left for 63
    octets.resize(3 + 65);
    input enough(octets);
    EXPECT_EQ(object.asnread(enough), 0);
    EXPECT_EQ(object.length_seen, 63u);
    EXPECT_EQ(enough.remaining(), 1u);  // three for the identifier, one for the length
}

TEST(object, writing) {
    probe object;
    EXPECT_EQ(written(object), std::to_string(zr_err_value_absent));
    object.set_optional(1);
    EXPECT_EQ(written(object), "");
    object.set("A");
    EXPECT_EQ(written(object), "04 01 41");
    EXPECT_EQ(written(object), "04 01 41");
    EXPECT_EQ(object.encoded, 1);  // the second time from the cache
    object.set_optional(0);
    EXPECT_EQ(object.is_encoding_valid(), 0);
    auto* standard = new probe;
    standard->set("A");
    object.set_default_value(standard);
    EXPECT_EQ(standard->get_parent(), &object);
    EXPECT_EQ(object.is_default_value(), 1);
    EXPECT_EQ(written(object), "");
    object.set("B");
    EXPECT_EQ(object.is_default_value(), 0);
    EXPECT_EQ(written(object), "04 01 42");
    object.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(object.is_valid(0), 1);
    EXPECT_EQ(object.is_default_value(), 1);
    EXPECT_EQ(written(object), "");
    zr_buffer_t contents(zr_normal);
    EXPECT_EQ(object.get_encoding(contents), 0);  // the default's
    EXPECT_EQ(hex(contents), "41");
    standard->set("C");  // a change of the default reaches the owner's cache
    EXPECT_EQ(object.is_encoding_valid(), 0);

    // A default that cannot be encoded is nobody's value; nor is one that is gone.
    standard->encode_status = zr_err_bad_contents;
    standard->set("A");
    object.set("A");
    EXPECT_EQ(object.is_default_value(), 0);
    for (probe* given : {standard, static_cast<probe*>(nullptr)}) {  // the same again, and none
        EXPECT_EQ(object.set_default_value(given), 0);
        EXPECT_EQ(object.is_defaultable(), given != nullptr ? 1 : 0);
        EXPECT_EQ(object.get_default_value(), given);
    }

    // A failure leaves the output as it was.
    object.encode_status = zr_err_conversion;
    object.set("A");
    zr_buffer_t output(zr_normal);
    output.append("kept");
    EXPECT_EQ(object.asnwrite(output), zr_err_conversion);
    EXPECT_EQ(object.is_encoding_valid(), 0);
    probe absent;
    EXPECT_EQ(absent.get_encoding(), zr_err_value_absent);
    EXPECT_EQ(absent.get_encoding(output), zr_err_value_absent);
    EXPECT_EQ(hex(output), "6b 65 70 74");
}

TEST(object, defaults_are_owned) {
    allocations watch;
    {
        probe object, cleared;
        object.set_default_value(new probe);
        object.set_default_value(new probe);
        object.set_default_value(object.get_default_value());
        cleared.set_default_value(new probe);
        cleared.set_default_value(nullptr);
        EXPECT_EQ(watch.live(), 1u);
    }
    EXPECT_EQ(watch.live(), 0u);
}

TEST(object, changes_reach_the_root) {
    probe root, middle, leaf;
    middle.set_parent(&root);
    leaf.set_parent(&middle);
    const auto change = [&](auto&& operation, int expected_checks, int valid_after) {
        for (probe* object : {&leaf, &middle, &root}) {
            object->set("A");
            ASSERT_EQ(object->get_encoding(), 0);
        }
        ASSERT_EQ(root.is_encoding_valid(), 1);
        const int checked = middle.checked;
        operation();
        EXPECT_EQ(middle.checked - checked, expected_checks);
        EXPECT_EQ(root.is_encoding_valid(), valid_after);
        EXPECT_EQ(middle.is_encoding_valid(), valid_after);
    };
    change([&] { leaf.set_value_valid(); }, 1, 1);
    change([&] { leaf.invalidate_encoding(); }, 0, 0);
    change([&] { leaf.invalidate_value(zr_invalidate_quiet); }, 0, 0);
    change([&] { leaf.invalidate_value(zr_invalidate_own); }, 1, 0);
    change([&] { leaf.invalidate_value(zr_invalidate_all); }, 1, 0);
    change([&] { leaf.empty(); }, 1, 0);
    change([&] { leaf.set_optional(0); }, 0, 0);
    change([&] { leaf.set_tag(7); }, 0, 0);
    change([&] { leaf.set_class(2); }, 0, 0);
    change([&] { leaf.set_default_value(nullptr); }, 0, 0);
    change([&] { EXPECT_EQ(leaf.set_empty_permitted(0), 0); }, 0, 1);
    leaf.invalidate_encoding();
    for (probe* object : {&middle, &root})
        object->get_encoding();
    leaf.set_tag(8);  // stale already: nobody is told
    EXPECT_EQ(middle.is_encoding_valid() + root.is_encoding_valid(), 2);
    EXPECT_EQ(leaf.check_type(8, 2), 1);
    EXPECT_EQ(leaf.check_type(8, 0), 0);
    EXPECT_EQ(leaf.check_type(7, 2), 0);
}

// What the types say of themselves before they have a value.
TEST(object, forms_and_answers) {
    zr_asn_any any(zr_normal);
    zr_asn_boolean boolean(zr_normal);
    zr_asn_integer integer(zr_normal);
    zr_asn_bitstring bits(zr_normal);
    zr_asn_octetstring text(zr_normal);
    zr_asn_null null(zr_normal);
    zrasn_octetstring stored(zr_normal);
    zr_asn_sequence sequence(zr_normal);
    zr_asn_sequence sized(4, zr_normal);
    const struct {
        zr_asn_object& object;
        int primitive, constructed, indefinite;
    } table[] = {{any, 1, 1, 0},    {boolean, 1, 0, 0}, {integer, 1, 0, 0},  {bits, 1, 1, 1}, {text, 1, 1, 1},
                 {stored, 1, 1, 1}, {null, 1, 0, 0},    {sequence, 0, 1, 1}, {sized, 0, 1, 0}};
    for (const auto& row : table) {
        SCOPED_TRACE(&row - table);
        EXPECT_EQ(row.object.encoding_primitive_permitted(), row.primitive);
        EXPECT_EQ(row.object.encoding_constructed_permitted(), row.constructed);
        EXPECT_EQ(row.object.encoding_indefinite_permitted(), row.indefinite);
        EXPECT_EQ(row.object.is_default_value(), 0);
        EXPECT_EQ(row.object.set_default_value(nullptr), 0);
        EXPECT_EQ(row.object.check_valid(0), 0);
        EXPECT_EQ(row.object.normalize(), 0);
        EXPECT_EQ(row.object.emptyi(), 0);
    }
}

TEST(object, consistency_equality_and_the_rest) {
    probe object, other;
    EXPECT_TRUE(object == other);  // neither can be written
    object.set("A");
    EXPECT_FALSE(object == other);
    other.set("A");
    EXPECT_TRUE(object == other);
    other.set_class(1);
    EXPECT_FALSE(object == other);

    object.invalidate_encoding();
    EXPECT_EQ(object.check_encode_flags(1), 0);
    EXPECT_EQ(object.check_encode_flags(0), 1);
    EXPECT_EQ(object.check_encode_flags(), 1);
    object.get_encoding();
    EXPECT_EQ(object.check_encode_flags(1), 1);
    EXPECT_EQ(object.check_encode_flags(0), 0);

    EXPECT_EQ(object.is_polymorphic(), 0);
    EXPECT_EQ(object.normalize(), 0);
    EXPECT_EQ(thrown([&] { static_cast<void>(object.get_child_count()); }),
              "get_child_count() invoked on non-composite object");
    const std::string no_copies = "unsupported 275063191: Can't copy asn_objects in src/asn1/asnbase";
    const std::string no_assignments = "unsupported 275063191: Can't assign asn_objects in src/asn1/asnbase";
    zr_asn_sequence sequence(zr_normal), second(zr_normal);
    zr_asn_integer integer(zr_normal);
    EXPECT_EQ(thrown([&] { const probe copy(object); }), no_copies);
    EXPECT_EQ(thrown([&] { const zr_asn_sequence copy(sequence); }), no_copies);
    EXPECT_EQ(thrown([&] { const zr_asn_integer copy(integer); }), no_copies);
    EXPECT_EQ(thrown([&] { other = object; }), no_assignments);
    EXPECT_EQ(thrown([&] { second = sequence; }), no_assignments);
}

TEST(object, texts) {
    const auto text = [](auto&& write) {
        zr_buffer_t output(zr_normal);
        const int status = write(output);
        if (status != 0) return std::to_string(status);
        return std::string(reinterpret_cast<const char*>(output.data()), output.length());
    };
    const auto shown = [&](const zr_asn_object& o) { return text([&](zr_buffer_t& b) { return o.display(b); }); };
    const auto flags = [&](const zr_asn_object& o, int indent) {
        return text([&](zr_buffer_t& b) { return o.display_state_flags(b, indent); });
    };
    probe object;
    EXPECT_EQ(shown(object), "275063200");
    EXPECT_EQ(flags(object, -3), "PROBE(valid=N, present=N, optional=N, defaultable=N, enc_valid=N)\n");
    auto* standard = new probe;
    standard->set("A");
    standard->set_class(2);
    object.set_default_value(standard);
    EXPECT_EQ(shown(object), "Default:OBJECT(tag=4, class=2)");
    EXPECT_EQ(flags(object, 2), "  PROBE(valid=Y, present=N, optional=N, defaultable=Y, enc_valid=N)\n");
    object.set("A");
    object.set_tag(0xFFFFFFFF);
    object.get_encoding();
    EXPECT_EQ(shown(object), "OBJECT(tag=-1, class=0)");  // a 32-bit long
    object.set_type_name("12345678901234567");
    object.set_optional(1);
    EXPECT_EQ(flags(object, 0), "1234567890123456(valid=Y, present=Y, optional=Y, defaultable=Y, enc_valid=N)\n");

    zr_asn_sequence sequence(zr_normal);
    zr_asn_null null(zr_normal);
    sequence.register_child(&null);
    EXPECT_EQ(shown(sequence), "COMPOSITE-OBJECT(tag=16, class=0) {OBJECT(tag=5, class=0)");
    EXPECT_EQ(flags(sequence, 1),
              " SEQUENCE(valid=Y, present=Y, optional=N, defaultable=N, enc_valid=N)\n"
              "   NULL(valid=Y, present=Y, optional=N, defaultable=N, enc_valid=N)\n");
    zr_asn_boolean boolean(zr_normal);
    sequence.register_child(&boolean);
    EXPECT_EQ(shown(sequence), "275063200");
    alignas(probe) unsigned char place[sizeof(probe)];
    auto* doomed = new (place) probe;
    const char* name = doomed->get_type_name();
    const auto offset = static_cast<size_t>(name - reinterpret_cast<const char*>(place));
    doomed->~probe();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(place) + offset, 17),
              std::string("Deleted\0\0\0\0\0\0\0\0\0\0", 17));
}

}  // namespace
}  // namespace zr_test
