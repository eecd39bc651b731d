#include <gtest/gtest.h>

#include <memory>

#include "support/ber.h"
#include "support/out_of_memory.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

using integers = zr_asn_sequenceof<zr_asn_integer>;
using array = zr_asn_arrayof<zr_asn_integer>;

void fill(integers& list, std::initializer_list<long> numbers) {
    for (long number : numbers)
        list.add_child()->set_value(number);
}

TEST(sequenceof, elements_come_and_go) {
    integers list(zr_normal);
    EXPECT_EQ(list.is_present(), 1);
    EXPECT_STREQ(list.get_type_name(), "SEQUENCEOF");
    EXPECT_EQ(written(list), "30 00");
    fill(list, {1, 2, 3});
    EXPECT_EQ(written(list), "30 09 02 01 01 02 01 02 02 01 03");
    EXPECT_EQ(list.delete_child(3), zr_err_bad_argument);
    EXPECT_EQ(list.is_encoding_valid(), 1);
    EXPECT_EQ(list.delete_child(1), 0);
    EXPECT_EQ(written(list), "30 06 02 01 01 02 01 03");
    list.add_child_before()->set_value(4);
    EXPECT_EQ(written(list), "30 09 02 01 04 02 01 01 02 01 03");
    EXPECT_EQ(list.emptyi(), 0);
    EXPECT_EQ(written(list), "30 00");
    EXPECT_EQ(list.get_child_capacity(), 32U);
    EXPECT_EQ(list.delete_child(0), zr_err_bad_argument);
    fill(list, {5});
    EXPECT_EQ(written(list), "30 03 02 01 05");
    zr_r_buffer_t no_octets;
    EXPECT_EQ(list.decode_value(no_octets, 0), 0);
    EXPECT_EQ(written(list), "30 00");
}

TEST(sequenceof, a_present_list_brings_its_parent_back) {
    integers list(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&list);
    parent.invalidate_value(zr_invalidate_own);
    EXPECT_EQ(parent.is_present(), 0);
    fill(list, {1});
    EXPECT_EQ(written(parent), "30 05 30 03 02 01 01");
}

TEST(sequenceof, sized_form_leaves_flags_off) {
    integers list(4, zr_normal);
    EXPECT_EQ(list.get_child_capacity(), 4U);
    EXPECT_EQ(list.is_present(), 1);
    EXPECT_EQ(written(list), "10 00");
    fill(list, {1});
    EXPECT_EQ(written(list), "10 03 02 01 01");
    EXPECT_EQ(read(list, "30 80 00 00"), zr_err_indefinite_length);
    EXPECT_EQ(read(list, "30 03 02 01 05"), 0);
    EXPECT_EQ(written(list), "10 03 02 01 05");
}

TEST(sequenceof, optional_without_elements_is_absent) {
    integers list(zr_normal);
    zr_asn_boolean flag(zr_normal);
    zr_asn_sequence parent(zr_normal);
    list.set_optional(1);
    parent.register_child(&list);
    parent.register_child(&flag);
    EXPECT_EQ(list.is_present(), 0);
    flag.set_value(1);
    EXPECT_EQ(written(parent), "30 03 01 01 ff");
    fill(list, {1});
    EXPECT_EQ(written(parent), "30 08 30 03 02 01 01 01 01 ff");
    list.emptyi();  // does not ask again
    EXPECT_EQ(written(parent), "30 05 30 00 01 01 ff");
    list.empty();
    EXPECT_EQ(written(parent), "30 03 01 01 ff");
    EXPECT_EQ(read(parent, "30 05 30 00 01 01 ff"), 0);
    EXPECT_EQ(written(parent), "30 05 30 00 01 01 ff");
    list.check_valid(0);
    EXPECT_EQ(list.is_present(), 0);
}

// Counts its objects, and notes what they were made with.
struct counted : zr_asn_integer {
    explicit counted(security_t mode) : zr_asn_integer(mode) {
        ++alive;
        made_with = mode;
    }
    ~counted() override { --alive; }
    static inline int alive = 0;
    static inline security_t made_with = zr_normal;
};

TEST(sequenceof, elements_take_the_current_mode) {
    zr_asn_sequenceof<counted> list(zr_normal);
    zr_asn_sequence parent(zr_normal);
    parent.register_child(&list);
    for (security_t mode : {zr_secure, zr_local_code_set, zr_normal}) {
        list.set_secure(mode);
        list.add_child();
        EXPECT_EQ(counted::made_with, mode);
        read(list, "30 03 02 01 05");
        EXPECT_EQ(counted::made_with, mode);
    }
    list.add_child();
    parent.set_secure(zr_secure);
    EXPECT_EQ(list[0]->get_secure(), zr_secure);
}

TEST(sequenceof, the_front_of_a_full_table_is_replaced) {
    {
        zr_asn_sequenceof<counted> list(2, zr_normal);
        list.add_child()->set_value(1);
        list.add_child()->set_value(2);
        list.add_child_before()->set_value(3);
        EXPECT_EQ(counted::alive, 2);
        EXPECT_EQ(list.get_child_count(), 3U);
        EXPECT_EQ(list[2], nullptr);
        EXPECT_EQ(written(list), "10 06 02 01 03 02 01 02");
        EXPECT_EQ(list.delete_child(2), zr_err_bad_argument);
        list.add_child_before()->set_value(4);
        EXPECT_EQ(written(list), "10 09 02 01 04 02 01 03 02 01 02");
    }
    EXPECT_EQ(counted::alive, 0);
}

// An element that may be absent reads as nothing.
struct shy : counted {
    explicit shy(security_t mode) : counted(mode) { set_optional(1); }
};

TEST(sequenceof, an_element_of_no_octets_ends_the_reading) {
    zr_asn_sequenceof<shy> list(zr_normal);
    for (const char* octets : {"30 06 02 01 05 01 01 ff", "30 80 02 01 05", "30 80 02 01 05 01 01 ff 00 00"}) {
        EXPECT_EQ(read(list, octets), zr_err_no_match) << octets;
        EXPECT_EQ(counted::alive, 1);
    }
    zr_asn_sequenceof<zr_asn_nothing> nothings(zr_normal);
    EXPECT_EQ(read(nothings, "30 01 00"), zr_err_no_match);
}

// A parent that notices being told of changes.
struct listener : zr_asn_sequence {
    using zr_asn_sequence::zr_asn_sequence;
    void invalidate_encoding() const override { ++told, zr_asn_sequence::invalidate_encoding(); }
    int check_valid(int deep) override { return ++told, zr_asn_sequence::check_valid(deep); }
    mutable int told = 0;
};

TEST(sequenceof, destruction_tells_nobody) {
    listener parent(zr_normal);
    {
        zr_asn_sequenceof<array::cherce> list(zr_normal);
        array places(zr_normal);
        parent.register_child(&list);
        parent.register_child(&places);
        list.add_child()->select(0);
        places.inner_list().add_child()->select(0);
        parent.told = 0;
    }
    EXPECT_EQ(parent.told, 0);
}

// A record that contains a list of itself.
struct folder : zr_asn_sequence {
    explicit folder(security_t mode) : zr_asn_sequence(mode), inner(zr_normal) { register_child(&inner); }
    zr_asn_sequenceof<folder> inner;
};

TEST(sequenceof, nesting_is_limited) {
    const std::string too_deep = "memory 275062885: Too many nested levels in asn_composite in src/asn1/asnbase";
    for (unsigned int levels : {1000U, 2000U, 2001U, 2002U, 200000U}) {  // a folder is two
        std::vector<unsigned char> octets;
        for (unsigned int i = 0; i < levels; ++i)
            octets.insert(octets.end(), {0x30, 0x80});
        octets.resize(octets.size() + 2 * levels);
        folder root(zr_normal);
        input cursor(octets);
        const bool fits = levels <= 2000;
        EXPECT_EQ(thrown([&] { EXPECT_EQ(root.asnread(cursor), 0); }), fits ? "nothing" : too_deep) << levels;
        EXPECT_EQ(root.is_present(), fits ? 1 : 0);
        EXPECT_EQ(cursor.consumed(), fits ? static_cast<long>(octets.size()) : 0);
        EXPECT_EQ(cursor.depth(), 0U);
    }
}

TEST(sequenceof, exhausted_memory) {
    const auto octets = bytes("30 80 02 01 01 02 01 02 30 03 02 01 05 00 00");
    struct both : zr_asn_choice {
        explicit both(security_t mode) : zr_asn_choice(mode), number(mode), list(mode) {
            register_child(&number);
            register_child(&list);
        }
        counted number;
        zr_asn_sequenceof<counted> list;
    };
    const size_t failures = fail_each_allocation([&](auto&& failing) {
        zr_asn_sequenceof<both> list(zr_normal);
        input cursor(octets);
        std::string what;
        const bool failed = 0 != failing([&] { what = thrown([&] { EXPECT_EQ(list.asnread(cursor), 0); }); });
        EXPECT_EQ(what.rfind("memory 275062885: Out of memory", 0), failed ? 0 : std::string::npos) << what;
        if (what.find("asn_sequenceof") != std::string::npos) {
            EXPECT_EQ(what, "memory 275062885: Out of memory in asn_sequenceof:decode_value in src/asn1/asnbase.h");
        }
        EXPECT_EQ(cursor.remaining(), failed ? octets.size() : 0);
        EXPECT_EQ(list.is_present(), failed ? 0 : 1);
    });
    EXPECT_EQ(counted::alive, 0);
    EXPECT_GE(failures, 6U);

    // add_child: first the element cannot be had, then the table, then nothing fails.
    for (bool before : {false, true}) {
        zr_asn_sequenceof<counted> list(zr_normal);
        allocations watch;
        for (size_t n : {1, 2, 3}) {
            watch.fail_allocation(n);
            EXPECT_EQ((before ? list.add_child_before() : list.add_child()) != nullptr, n == 3);
            EXPECT_EQ(counted::alive, n == 3 ? 1 : 0);
        }
        watch.fail_allocation(0);
    }
}

// How often members are asked, how many octets lie in the blocks that are handed back (a table that grows hands back
// its old block), and how many blocks are made, for n elements and for twice as many: at most twice each.
TEST(sequenceof, cost_is_linear) {
    static size_t asked;
    struct member : zr_asn_integer {
        explicit member(security_t mode) : zr_asn_integer(mode) {}
        int is_valid(int deep) const override { return ++asked, zr_asn_integer::is_valid(deep); }
        int is_present() const override { return ++asked, zr_asn_integer::is_present(); }
    };
    const auto costs = [](unsigned int count) {
        std::vector<unsigned char> octets = {0x30, 0x80};
        for (unsigned int i = 0; i < count; ++i)
            octets.insert(octets.end(), {0x02, 0x01, 0x05});
        octets.insert(octets.end(), {0, 0});
        member last(zr_normal);
        auto list = std::make_unique<zr_asn_sequenceof<member>>(zr_normal);
        zr_asn_sequence parent(zr_normal);  // absent throughout: every registration reaches it
        parent.register_child(list.get());
        parent.register_child(&last);
        std::vector<size_t> cost;
        size_t returned = 0;
        allocations watch;
        watch.on_release([](void* sum, const void*, size_t size) { *static_cast<size_t*>(sum) += size; }, &returned);
        const auto measure = [&](auto&& operation) {
            const size_t before = watch.made();
            asked = returned = 0;
            operation();
            cost.insert(cost.end(), {asked, returned, watch.made() - before});
        };
        zr_buffer_t output(zr_normal);
        measure([&] { EXPECT_EQ(read_from(*list, octets).status, 0); });
        EXPECT_EQ(list->get_child_count(), count);
        measure([&] { EXPECT_EQ(list->asnwrite(output), 0); });
        cost[cost.size() - 2] = 0;  // the buffers grow in even steps (chunk), which is not the list's doing
        measure([&] { list->empty(); });
        measure([&] {
            for (unsigned int i = 0; i < count; ++i)
                list->add_child()->set_value(1);
        });
        measure([&] { list.reset(); });
        return cost;
    };
    const auto some = costs(15000), twice = costs(30000);
    for (size_t i = 0; i < some.size(); ++i)
        EXPECT_LE(twice[i], 2 * some[i] + 2000) << "operation " << i / 3 << ", kind " << i % 3;
}

TEST(arrayof, empty_places_survive) {
    array places(zr_normal);
    EXPECT_STREQ(places.get_type_name(), "SARRAYOF");
    EXPECT_EQ(places.get_tag(), 0U);
    EXPECT_EQ(places.is_polymorphic(), 1);
    EXPECT_EQ(written(places), "30 00");
    places.inner_list().add_child()->select(0);
    auto* second = places.inner_list().add_child();
    EXPECT_EQ(second->selected(), -1);
    EXPECT_EQ(written(places), "275063208");
    second->select(1);
    second->value().set_value(5);
    EXPECT_EQ(written(places), "30 05 05 00 02 01 05");
    EXPECT_EQ(places.get_child_count(), 2U);

    array back(zr_normal);
    EXPECT_EQ(read(back, "30 80 05 00 02 01 05 05 00 00 00"), 0);
    EXPECT_EQ(written(back), "30 07 05 00 02 01 05 05 00");
    EXPECT_EQ(back.inner_list()[1]->selected(), 1);
    EXPECT_EQ(read(back, "30 05 05 00 01 01 ff"), zr_err_no_match);
    EXPECT_EQ(back.is_present(), 0);

    back.keep_positions(2);
    EXPECT_EQ(read(back, "30 0a 05 00 02 01 05 05 00 02 01 07"), 0);
    EXPECT_EQ(written(back), "30 05 05 00 02 01 05");
    EXPECT_EQ(read(back, "30 0a 05 00 02 01 05 05 00 01 01 07"), zr_err_no_match);
}

TEST(arrayof, answers_for_its_list) {
    array places(zr_normal);
    zr_asn_boolean flag(zr_normal);
    zr_asn_sequence parent(zr_normal);
    EXPECT_EQ(places.set_optional(1), 0);
    EXPECT_EQ(places.is_optional(), 1);
    EXPECT_EQ(places.inner_list().get_empty_permitted(), 0);
    EXPECT_EQ(places.get_empty_permitted(), 1);
    parent.register_child(&places);
    parent.register_child(&flag);
    places.empty();
    flag.set_value(1);
    EXPECT_EQ(written(parent), "30 03 01 01 ff");
    auto* place = places.inner_list().add_child();
    place->select(1);
    place->value().set_value(3);
    EXPECT_EQ(written(parent), "30 08 30 03 02 01 03 01 01 ff");
    EXPECT_EQ(places.is_encoding_valid(), 1);
    EXPECT_EQ(parent.check_encode_flags(1), 1);
    place->select(0);
    EXPECT_EQ(places.is_encoding_valid(), 0);
    EXPECT_EQ(written(parent), "30 07 30 02 05 00 01 01 ff");
    EXPECT_EQ(read(parent, "30 03 01 01 00"), 0);
    EXPECT_EQ(places.is_present(), 0);
    EXPECT_EQ(written(parent), "30 03 01 01 00");
    EXPECT_EQ(places.set_empty_permitted(1), 0);
    EXPECT_EQ(places.inner_list().get_empty_permitted(), 1);

    zr_buffer_t contents(zr_normal);
    input octets("05 00 02 01 09");
    EXPECT_EQ(places.decode_value(octets, 5), 0);
    EXPECT_EQ(places.encode_value(contents), 0);
    EXPECT_EQ(hex(contents), "05 00 02 01 09");

    EXPECT_EQ(places.is_constructed(), places.inner_list().is_constructed());
    EXPECT_EQ(places.encoding_primitive_permitted(), 0);
    EXPECT_EQ(places.encoding_constructed_permitted(), 1);
    EXPECT_EQ(places.encoding_indefinite_permitted(), places.inner_list().encoding_indefinite_permitted());
    EXPECT_EQ(places.should_generate_constructed(), places.inner_list().should_generate_constructed());
    EXPECT_EQ(read(places, "30 80 05 00 00 00"), 0);
    EXPECT_EQ(places.is_indefinite_length(), places.inner_list().is_indefinite_length());
    EXPECT_EQ(places.check_encode_flags(), places.inner_list().check_encode_flags());
    EXPECT_EQ(places.get_default_value(), nullptr);
    EXPECT_EQ(places.is_default_value(), 0);

    parent.set_secure(zr_secure);
    EXPECT_EQ(places.inner_list().get_secure(), zr_secure);
    EXPECT_EQ(places.inner_list().add_child()->value().get_secure(), zr_secure);
}

}  // namespace
}  // namespace zr_test
