// Composites: how presence follows from the members, the table of members, depth and cost.
#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "support/allocations.h"
#include "support/ber.h"
#include "support/samples.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

struct sequence : zr_asn_sequence {
    using zr_asn_sequence::zr_asn_sequence;
    void allow_indefinite() { indefinite_permitted_ = 1; }
    void make_constructed() { generate_constructed_ = 1; }
};

constexpr char absent[] = "275063200";

// Whether a walk over all members finds a composite present.
bool found_present(zr_asn_composite& sequence) {
    bool counted = sequence.get_empty_permitted() != 0;
    for (unsigned int i = 0; i < sequence.get_child_count(); ++i) {
        const zr_asn_object* child = sequence[i];
        if (child->is_valid(0) == 0) return false;
        counted = counted || child->is_present() != 0 || child->is_defaultable() != 0;
    }
    return counted;
}

// Some operations leave a composite absent that a new look would find present (marking a member as optional tells
// nobody): each is looked at again, the inner ones first.
TEST(composite, presence_is_what_a_walk_over_all_members_finds) {
    using operation = void (*)(zr_asn_object & o, int value);
    static constexpr operation operations[] = {
        [](zr_asn_object& o, int) { o.invalidate_value(zr_invalidate_all); },
        [](zr_asn_object& o, int) { o.invalidate_value(zr_invalidate_own); },
        [](zr_asn_object& o, int) { o.empty(); },
        [](zr_asn_object& o, int) { static_cast<void>(o.is_valid(1)); },
        [](zr_asn_object& o, int value) { o.set_empty_permitted(value); },
        [](zr_asn_object& o, int value) { o.set_optional(value); },
        [](zr_asn_object& o, int value) { o.set_default_value(value != 0 ? new zr_asn_boolean(zr_normal) : nullptr); },
    };
    for (unsigned int seed = 0; seed < 2000 && !HasFatalFailure(); ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](size_t n) { return random() % n; };
        std::deque<zr_asn_sequence> sequences;  // the outer ones first
        std::deque<zr_asn_boolean> leaves;
        zr_asn_sequence& root = sequences.emplace_back(zr_normal);
        root.register_child(&leaves.emplace_back(zr_normal));
        for (size_t count = below(20); count != 0; --count) {
            zr_asn_sequence& parent = sequences[below(sequences.size())];
            zr_asn_object* const child = below(3) == 0 ? static_cast<zr_asn_object*>(&sequences.emplace_back(zr_normal))
                                                       : &leaves.emplace_back(zr_normal);
            child->set_optional(static_cast<int>(below(2)));
            child->set_empty_permitted(static_cast<int>(below(2)));
            below(4) == 0 ? parent.register_child_before(child) : parent.register_child(child);
            if (below(8) == 0 && child->is_present() == 0) parent.register_child(child);  // a second time
        }
        for (int step = 0; step < 60; ++step) {
            zr_asn_boolean& leaf = leaves[below(leaves.size())];
            zr_asn_object* const object =
                below(2) == 0 ? &leaf : static_cast<zr_asn_object*>(&sequences[below(sequences.size())]);
            const size_t what = below(2 * std::size(operations));
            const int value = static_cast<int>(below(2));
            if (what < std::size(operations)) {
                operations[what](*object, value);
            } else if (what != std::size(operations)) {
                leaf.set_value(value);
            } else if (const std::string octets = written(root); octets.size() % 3 == 2) {  // no status
                read(root, octets);  // which may go wrong: members have no tags of their own
            }
            for (size_t i = sequences.size(); i-- != 0;) {
                sequences[i].check_valid(0);
                ASSERT_EQ(sequences[i].is_present() != 0, found_present(sequences[i]))
                    << "seed " << seed << ", step " << step << ", operation " << what << ", sequence " << i;
            }
        }
    }
}

TEST(composite, the_table_grows_in_steps) {
    static zr_asn_null child(zr_normal);
    zr_asn_sequence sequence(zr_normal);
    std::string steps;  // counts at which the table was full, and how far it grew then
    unsigned int capacity = 0;
    for (unsigned int count = 0; count < 40500; ++count) {
        sequence.register_child(&child);
        if (sequence.get_child_capacity() == capacity) continue;
        capacity = sequence.get_child_capacity();
        steps += std::to_string(count) + "+" + std::to_string(capacity - count) + " ";
    }
    EXPECT_EQ(steps,
              "0+32 32+512 544+512 1056+512 1568+512 2080+512 2592+512 3104+512 3616+512 4128+1024 5152+1024 6176+1536 "
              "7712+1536 9248+2048 11296+2560 "
              "13856+3072 16928+4096 21024+5120 26144+6144 32288+7680 39968+512 40480+512 ");
    EXPECT_EQ(sequence.get_child(40499), &child);
    EXPECT_EQ(sequence.get_child(40500), nullptr);
    EXPECT_EQ(sequence.register_child(nullptr), zr_err_bad_argument);
    EXPECT_EQ(sequence.register_child_before(nullptr), zr_err_bad_argument);
    EXPECT_EQ(sequence.get_child_count(), 40500u);
}

TEST(composite, children_put_before) {
    std::deque<zr_asn_integer> members;
    while (members.size() < 40)
        members.emplace_back(zr_normal);
    zr_asn_sequence sequence(zr_normal);
    EXPECT_EQ(sequence.register_child_before(&members[0]), 0);  // an empty table: 512 places
    EXPECT_EQ(sequence.get_child_capacity(), 512u);
    EXPECT_EQ(members[0].get_parent(), &sequence);
    sequence.register_child(&members[1]);
    sequence.register_child_before(&members[2]);  // room: the others move up
    EXPECT_EQ(sequence[0], &members[2]);
    EXPECT_EQ(sequence[1], &members[0]);
    EXPECT_EQ(sequence[2], &members[1]);
    for (size_t i = 0; i < 3; ++i)
        members[i].set_value(1L);
    EXPECT_EQ(sequence.is_present(), 1);
    sequence.register_child_before(&members[39]);  // is asked at the next look
    EXPECT_EQ(sequence.is_present(), 1);
    sequence.check_valid(0);
    EXPECT_EQ(sequence.is_present(), 0);

    zr_asn_sequence full(zr_normal);
    for (size_t i = 0; i < 32; ++i) {
        full.register_child(&members[i]);
        members[i].set_value(static_cast<long>(i));
    }
    EXPECT_EQ(full.is_present(), 1);
    members[33].set_value(33L);
    EXPECT_EQ(full.register_child_before(&members[33]), 0);
    EXPECT_EQ(full.get_child_capacity(), 544u);
    EXPECT_EQ(full.get_child_count(), 33u);
    EXPECT_EQ(full[0], &members[33]);  // in the place of the first
    EXPECT_EQ(full[1], &members[1]);
    EXPECT_EQ(full[32], nullptr);  // and a hole at the end
    EXPECT_EQ(full.is_encoding_valid(), 0);
    EXPECT_EQ(written(full).substr(0, 14), "30 60 02 01 21");
    EXPECT_EQ(read(full, written(full)), 0);
    EXPECT_EQ(full.is_valid(1), 1);
    EXPECT_EQ(full.check_encode_flags(), 1);
    EXPECT_EQ(full.normalize(), 0);
    EXPECT_EQ(full.empty(), 0);
    zr_buffer_t text(zr_normal);
    EXPECT_EQ(full.display_state_flags(text, 0), 0);
    EXPECT_EQ(full.display(text), zr_err_value_absent);
}

TEST(composite, the_sized_constructor) {
    sequence sized(3, zr_normal);
    EXPECT_EQ(sized.get_child_capacity(), 3u);
    EXPECT_EQ(sized.get_child_count(), 0u);
    std::deque<zr_asn_integer> members;
    while (members.size() < 4) {
        members.emplace_back(zr_normal).set_value(1L);
        sized.register_child(&members.back());
    }
    EXPECT_EQ(sized.get_child_capacity(), 3u + 512u);
    EXPECT_EQ(written(sized).substr(0, 5), "10 0c");  // not constructed
    EXPECT_EQ(sized.is_constructed(), 0);
    EXPECT_EQ(read(sized, "10 00"), zr_err_primitive_form);
    EXPECT_EQ(read(sized, "30 80 00 00"), zr_err_indefinite_length);
    sized.make_constructed();
    sized.allow_indefinite();
    const char* octets = "30 80 02 01 01 02 01 02 02 01 03 02 01 04 00 00";
    EXPECT_EQ(read(sized, octets), 0);
    EXPECT_EQ(written(sized), "30 0c 02 01 01 02 01 02 02 01 03 02 01 04");
    EXPECT_EQ(sequence(zr_normal).is_constructed(), 1);

    allocations watch;
    watch.fail_allocation(1);
    EXPECT_EQ(thrown([] { const sequence refused(3, zr_normal); }),
              "memory 275062885: Out of memory in asn_composite::asn_composite in src/asn1/asnbase");
    const unsigned int more = sized.get_child_capacity();
    zr_asn_null filler(zr_normal), one_more(zr_normal);
    while (sized.get_child_count() < more)
        sized.register_child(&filler);
    for (const auto operation : {&zr_asn_composite::register_child, &zr_asn_composite::register_child_before}) {
        watch.fail_allocation(1);
        EXPECT_EQ(thrown([&] { (sized.*operation)(&one_more); }),
                  "memory 275062885: Out of memory in asn_composite::register_child in src/asn1/asnbase");
        EXPECT_EQ(sized.get_child_count(), more);
        EXPECT_EQ(one_more.get_parent(), nullptr);
    }
}

TEST(sequence, presence_and_caches) {
    sample_sequence object;
    EXPECT_EQ(object.is_present(), 0);
    object.flag.set_value(0);
    EXPECT_EQ(object.is_present(), 0);
    object.number.set_value(5L);
    EXPECT_EQ(written(object), "30 06 02 01 05 01 01 00");
    EXPECT_EQ(object.check_encode_flags(1), 1);
    object.text.set_optional(1);
    EXPECT_EQ(object.is_encoding_valid(), 0);
    EXPECT_EQ(object.check_encode_flags(), 1);
    object.number.invalidate_value(zr_invalidate_quiet);  // nobody is told
    EXPECT_EQ(object.is_present(), 1);
    EXPECT_EQ(written(object), absent);
    EXPECT_EQ(object.is_valid(1), 0);
    EXPECT_EQ(object.is_present(), 0);
    object.number.set_value(6L);
    object.invalidate_value(zr_invalidate_own);  // the members stay
    EXPECT_EQ(object.is_present(), 0);
    EXPECT_EQ(object.number.is_present(), 1);
    object.check_valid(0);
    EXPECT_EQ(object.is_present(), 1);
    object.invalidate_value(zr_invalidate_quiet);
    EXPECT_EQ(object.number.is_present() + object.flag.is_present(), 0);

    // A member's stale cache below a valid one is seen.
    object.number.set_value(7L);
    ASSERT_EQ(object.get_encoding(), 0);
    EXPECT_EQ(object.check_encode_flags(), 0);  // the absent defaultable member was never encoded
    object.flag.set_value(0);
    ASSERT_EQ(object.get_encoding(), 0);
    EXPECT_EQ(object.check_encode_flags(), 1);

    // Registering makes the own cache stale, never the child's.
    zr_asn_integer late(zr_normal);
    late.set_value(9L);
    object.register_child(&late);
    EXPECT_EQ(written(object), "30 09 02 01 07 01 01 00 02 01 09");

    zr_asn_sequence empty(zr_normal), strict(zr_normal);
    EXPECT_EQ(empty.is_present(), 0);  // until it is looked at
    empty.check_valid(0);
    EXPECT_EQ(written(empty), "30 00");
    zr_asn_integer optional(zr_normal), other(zr_normal);
    optional.set_optional(1);
    other.set_optional(1);
    empty.register_child(&optional);
    EXPECT_EQ(written(empty), "30 00");
    strict.set_empty_permitted(0);
    strict.register_child(&other);
    EXPECT_EQ(written(strict), absent);
    EXPECT_EQ(read(strict, "30 00"), 0);  // reading makes it present all the same
    strict.empty();
    other.set_value(1L);
    EXPECT_EQ(written(strict), "30 03 02 01 01");

    // One present below an absent one makes it look again.
    zr_asn_sequence outer(zr_normal);
    outer.register_child(&empty);
    EXPECT_EQ(outer.is_present(), 1);
    outer.invalidate_value(zr_invalidate_own);
    EXPECT_EQ(outer.is_present(), 0);
    empty.check_valid(0);
    EXPECT_EQ(outer.is_present(), 1);
}

TEST(composite, modes_are_handed_down) {
    struct seen : zr_asn_integer {
        using zr_asn_integer::zr_asn_integer;
        void set_secure(security_t mode) override { ++told, zr_asn_integer::set_secure(mode); }
        int told = 0;
    } leaf(zr_normal), before(zr_normal);
    zr_asn_sequence inner(zr_normal), outer(zr_secure);
    inner.register_child(&leaf);
    inner.register_child_before(&before);
    EXPECT_EQ(leaf.told, 0);
    outer.register_child(&inner);
    EXPECT_EQ(leaf.told, 1);
    EXPECT_EQ(leaf.get_secure(), zr_secure);
    EXPECT_EQ(before.get_secure(), zr_secure);
    outer.set_secure(zr_local_code_set);  // what is secure stays so, and what is below it
    EXPECT_EQ(outer.get_secure(), zr_local_code_set);
    EXPECT_EQ(inner.get_secure(), zr_secure);
    EXPECT_EQ(leaf.get_secure(), zr_secure);
    seen secure(zr_secure), normal(zr_normal);
    zr_asn_sequence between(zr_normal);
    between.register_child(&normal);
    between.register_child(&secure);
    outer.register_child(&between);
    EXPECT_EQ(normal.get_secure(), zr_local_code_set);
    EXPECT_EQ(between.get_secure(), zr_local_code_set);
    EXPECT_EQ(secure.told, 0);
    outer.set_secure(zr_normal);  // never handed down
    EXPECT_EQ(outer.get_secure(), zr_normal);
    EXPECT_EQ(between.get_secure(), zr_local_code_set);
    outer.set_secure(zr_secure);
    EXPECT_EQ(normal.get_secure(), zr_secure);
}

// How often members are asked, for n members and for twice as many: at most twice as often.
TEST(composite, cost_is_linear) {
    static long asked;
    struct member : zr_asn_boolean {
        member() : zr_asn_boolean(zr_normal) {}
        int is_valid(int deep) const override { return ++asked, zr_asn_boolean::is_valid(deep); }
        int is_present() const override { return ++asked, zr_asn_boolean::is_present(); }
    };
    const auto costs = [](size_t n, int optional, int empty_permitted) {
        std::vector<long> cost;
        std::deque<member> members(n);
        zr_asn_sequence sequence(zr_normal);
        sequence.set_empty_permitted(empty_permitted);
        const auto measure = [&](auto&& operation) {
            asked = 0;
            operation();
            cost.push_back(asked);
        };
        for (auto& m : members)
            m.set_optional(optional);
        std::string octets;
        measure([&] {
            for (auto& m : members)
                sequence.register_child(&m);
        });
        measure([&] {
            for (auto& m : members)
                m.set_value(0);
        });
        measure([&] { octets = written(sequence); });
        for (int times = 0; times < 2; ++times)
            measure([&] { EXPECT_EQ(read(sequence, octets), 0); });
        EXPECT_EQ(written(sequence), octets);
        measure([&] { EXPECT_EQ(sequence.is_valid(1), 1); });
        sequence.empty();
        measure([&] {
            for (size_t i = n; i-- != 0;)
                members[i].set_value(0);
        });
        EXPECT_EQ(written(sequence), octets);
        measure([&] {
            for (size_t i = n; i-- != 0;)  // one after another is lost and comes back
                members[i].invalidate_value(zr_invalidate_all), members[i].set_value(0);
        });
        measure([&] {
            for (size_t i = n; i-- != 0;)
                members[i].invalidate_value(zr_invalidate_all);
        });
        return cost;
    };
    for (const int how : {0, 1, 2, 3}) {
        const auto some = costs(1000, how & 1, how >> 1), twice = costs(2000, how & 1, how >> 1);
        for (size_t kind = 0; kind < some.size(); ++kind) {
            EXPECT_LE(twice[kind], 2 * some[kind] + 50) << "kind " << kind << ", how " << how;
            EXPECT_LE(some[kind], 20 * 1000) << "kind " << kind << ", how " << how;
        }
    }
}

// Clearing a chain of n levels tells n encodings, not n for each level.
TEST(composite, clearing_costs_one_step_for_each_object) {
    static long told;
    struct level : zr_asn_sequence {
        level() : zr_asn_sequence(zr_normal) {}
        void invalidate_encoding() const override { ++told, zr_asn_sequence::invalidate_encoding(); }
    };
    std::deque<level> chain(1000);
    zr_asn_integer leaf(zr_normal);
    zr_asn_object* inside = &leaf;
    for (level& each : chain) {
        each.register_child(inside);
        inside = &each;
    }
    for (const invalidate_t extent : {zr_invalidate_quiet, zr_invalidate_all}) {
        leaf.set_value(5L);
        ASSERT_EQ(inside->get_encoding(), 0);
        told = 0;
        inside->invalidate_value(extent);
        EXPECT_LE(told, 1000);
        EXPECT_EQ(leaf.is_present(), 0);
        for (const level& each : chain)
            ASSERT_EQ(each.is_present() + each.is_encoding_valid(), 0);
    }
}

// What a composite knows of its members survives that one is handed to another composite.
TEST(composite, members_that_move) {
    for (const int empty_permitted : {0, 1}) {
        std::deque<zr_asn_boolean> members;
        zr_asn_sequence sequence(zr_normal), other(zr_normal);
        sequence.set_empty_permitted(empty_permitted);
        while (members.size() < 3) {
            sequence.register_child(&members.emplace_back(zr_normal));
            members.back().set_value(1);
        }
        other.register_child(&members[1]);
        for (int twice = 0; twice < 2; ++twice) {
            EXPECT_EQ(sequence.is_present() + other.is_present(), 2);
            members[2].invalidate_value(zr_invalidate_all);
            EXPECT_EQ(sequence.is_present(), 0);
            members[2].set_value(1);
            members[1].invalidate_value(zr_invalidate_all);
            EXPECT_EQ(other.is_present(), 0);
            members[1].set_value(1);
        }
        members[2].invalidate_value(zr_invalidate_all);
        other.register_child(&members[2]);  // while the sequence knows that it has changed
        sequence.check_valid(0);
        EXPECT_EQ(sequence.is_present(), 0);
    }
}

// What stays as it was: nothing around it looks at its members again, and nobody asks a member that was looked at.
TEST(composite, a_value_that_changes_changes_no_presence) {
    static int looks, asked;
    struct level : zr_asn_sequence {
        using zr_asn_sequence::zr_asn_sequence;
        int check_valid(int deep) override { return ++looks, zr_asn_sequence::check_valid(deep); }
    } inner(zr_normal), outer(zr_normal);
    struct : zr_asn_boolean {
        using zr_asn_boolean::zr_asn_boolean;
        int is_valid(int deep) const override { return ++asked, zr_asn_boolean::is_valid(deep); }
    } member{zr_normal};
    inner.register_child(&member);
    outer.register_child(&inner);
    member.set_value(1);
    EXPECT_EQ(outer.is_present(), 1);
    looks = asked = 0;
    member.set_value(0);
    EXPECT_EQ(looks, 1);
    EXPECT_EQ(asked, 0);
}

TEST(composite, a_member_that_is_taken_out) {
    struct : zr_asn_sequence {
        using zr_asn_sequence::remove_child;
        using zr_asn_sequence::zr_asn_sequence;
    } sequence{zr_normal};
    zr_asn_boolean present(zr_normal), optional(zr_normal);
    optional.set_optional(1);
    sequence.set_empty_permitted(0);
    sequence.register_child(&optional);
    sequence.register_child(&present);
    present.set_value(1);
    EXPECT_EQ(sequence.is_present(), 1);
    sequence.remove_child(1);
    sequence.check_valid(0);
    EXPECT_EQ(sequence.is_present(), 0);
}

TEST(composite, a_member_that_cannot_be_emptied) {
    struct : zr_asn_boolean {
        using zr_asn_boolean::zr_asn_boolean;
        int emptyi() override { return 5; }
    } member{zr_normal};
    zr_asn_sequence sequence(zr_normal);
    sequence.register_child(&member);
    EXPECT_EQ(sequence.emptyi(), 5);
}

// An array is as present as the list inside it: what its own flag says does not count.
TEST(composite, members_may_answer_for_their_own) {
    zr_asn_arrayof<zr_asn_integer> array(zr_normal);
    zr_asn_sequence sequence(zr_normal), outer(zr_normal);
    sequence.register_child(&array);
    outer.register_child(&sequence);
    EXPECT_EQ(outer.is_present(), 1);
    array.invalidate_value(zr_invalidate_own);
    EXPECT_EQ(outer.is_present(), 1);
    array.invalidate_value(zr_invalidate_all);
    EXPECT_EQ(sequence.is_present(), 0);
    EXPECT_EQ(outer.is_present(), 0);
}

}  // namespace
}  // namespace zr_test
