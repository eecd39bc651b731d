// Composites: how presence follows from the members, the table of members, depth and cost.
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <random>

#include "support/allocations.h"
#include "support/ber.h"
#include "support/thrown.h"

namespace zr_test {
namespace {

struct sequence : zr_asn_sequence {
    using zr_asn_sequence::zr_asn_sequence;
    void allow_indefinite() { indefinite_permitted_ = 1; }
    void make_constructed() { generate_constructed_ = 1; }
};

constexpr char absent[] = "275063200";

// The rules of presence without memory: every question walks all members, every change is told at once.
struct plain_sequence : zr_asn_sequence {
    explicit plain_sequence(security_t secure) : zr_asn_sequence(secure) {}
    int check_valid(int deep) override {
        unsigned int counted = 0;
        if (get_child_count() == 0 && get_empty_permitted() == 0) return invalidate_value(zr_invalidate_own);
        for (unsigned int i = 0; i < get_child_count(); ++i) {
            const zr_asn_object* child = get_child(i);
            if (child->is_valid(deep) == 0) return is_present() != 0 ? invalidate_value(zr_invalidate_own) : 0;
            if (child->is_present() != 0 || child->is_defaultable() != 0) ++counted;
        }
        if (counted == 0 && get_empty_permitted() == 0) return invalidate_value(zr_invalidate_own);
        if (is_present() != 0 && enclosing_present()) return 0;
        return set_value_valid();
    }
    int invalidate_value(invalidate_t extent) override {
        for (unsigned int i = 0; extent != zr_invalidate_own && i < get_child_count(); ++i)
            get_child(i)->invalidate_value(zr_invalidate_quiet);
        return zr_asn_object::invalidate_value(zr_invalidate_own);
    }
};

// One random tree in two forms, which get the same operations.
class twins {
public:
    explicit twins(unsigned int seed) : random_(seed) { roots_ = grow_pair(0); }

    void check_random_operations(int count) {
        for (int step = 0; step < count; ++step) {
            const size_t at = below(nodes_.size());
            const std::string what = operate(nodes_[at]);
            if (what.empty()) continue;
            for (const node& seen : nodes_) {
                ASSERT_EQ(seen.ours->is_present(), seen.plain->is_present()) << what << " on " << at;
                ASSERT_EQ(seen.ours->is_encoding_valid(), seen.plain->is_encoding_valid()) << what << " on " << at;
            }
            look_again();
            if (step % 8 == 0) {
                ASSERT_EQ(written(*roots_.ours), written(*roots_.plain)) << what << " on " << at;
            }
        }
    }

private:
    struct node {
        zr_asn_object* ours;
        zr_asn_object* plain;
        bool is_leaf;
    };

    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }

    template <class Ours, class Plain>
    node keep(bool leaf) {
        owned_.push_back(std::make_unique<Ours>(zr_normal));
        owned_.push_back(std::make_unique<Plain>(zr_normal));
        nodes_.push_back({(owned_.end() - 2)->get(), owned_.back().get(), leaf});
        return nodes_.back();
    }

    node grow_pair(int depth) {
        if (depth > 0 && (depth > 4 || below(2) != 0)) return keep<zr_asn_boolean, zr_asn_boolean>(true);
        const node made = keep<zr_asn_sequence, plain_sequence>(false);
        const size_t members = below(6);
        if (below(3) == 0) on_both(made, [](zr_asn_object& o) { o.set_empty_permitted(0); });
        for (size_t i = 0; i < members; ++i) {
            const node child = grow_pair(depth + 1);
            const size_t kind = below(4);
            if (kind == 0) on_both(child, [](zr_asn_object& o) { o.set_optional(1); });
            if (kind == 1 && child.is_leaf) on_both(child, [](zr_asn_object& o) { leaf(o).set_default_value(1); });
            static_cast<zr_asn_composite*>(made.ours)->register_child(child.ours);
            static_cast<zr_asn_composite*>(made.plain)->register_child(child.plain);
        }
        return made;
    }

    template <class Operation>
    static void on_both(const node& n, Operation&& operation) {
        operation(*n.ours);
        operation(*n.plain);
    }

    // Some operations leave a composite absent that a new look would find present (marking a member as optional tells
    // nobody), and whether an outer one is looked at again is told only when the inner one's presence changes. The two
    // need to agree where nothing old is left.
    void look_again() {
        for (size_t i = nodes_.size(); i-- != 0;)
            on_both(nodes_[i], [](zr_asn_object& o) { o.check_valid(0); });
    }

    static zr_asn_boolean& leaf(zr_asn_object& o) { return static_cast<zr_asn_boolean&>(o); }

    // Says what it did; "" when that fits no such object.
    std::string operate(const node& n) {
        // clang-format off
        static constexpr struct { const char* name; void (*apply)(zr_asn_object& o, int value); } operations[] = {
            {"set_value", [](zr_asn_object& o, int value) { leaf(o).set_value(value); }},
            {"set_default_value", [](zr_asn_object& o, int value) { leaf(o).set_default_value(value); }},
            {"invalidate_value(2)", [](zr_asn_object& o, int) { o.invalidate_value(zr_invalidate_all); }},
            {"invalidate_value(1)", [](zr_asn_object& o, int) { o.invalidate_value(zr_invalidate_own); }},
            {"empty", [](zr_asn_object& o, int) { o.empty(); }},
            {"set_empty_permitted", [](zr_asn_object& o, int value) { o.set_empty_permitted(value); }},
            {"is_valid(1)", [](zr_asn_object& o, int) { static_cast<void>(o.is_valid(1)); }},
            {"set_optional", [](zr_asn_object& o, int value) { o.set_optional(value); }},
            {"check_valid", [](zr_asn_object& o, int) { o.check_valid(0); }}
        };
        // clang-format on
        const size_t which = below(std::size(operations) + 5);
        if (which == std::size(operations)) {
            std::string octets;
            on_both(roots_, [&](zr_asn_object& o) { octets = written(o); });
            if (octets.size() % 3 != 2) return "asnwrite";  // nothing, or a status
            on_both(roots_, [&](zr_asn_object& o) { read(o, octets); });
            return "asnread";
        }
        const auto& chosen = operations[which < std::size(operations) ? which : 0];
        if (!n.is_leaf && &chosen < operations + 2) return "";
        const int value = static_cast<int>(below(2));
        on_both(n, [&](zr_asn_object& o) { chosen.apply(o, value); });
        return chosen.name;
    }

    std::mt19937 random_;
    std::vector<std::unique_ptr<zr_asn_object>> owned_;
    std::vector<node> nodes_;
    node roots_{};
};

TEST(composite, presence_is_what_a_walk_over_all_members_finds) {
    for (unsigned int seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(seed);
        twins(seed).check_random_operations(60);
        if (HasFatalFailure()) break;
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

// SEQUENCE { INTEGER, OCTET STRING OPTIONAL, BOOLEAN DEFAULT TRUE }
struct record : zr_asn_sequence {
    record() : zr_asn_sequence(zr_normal) {
        text.set_optional(1);
        flag.set_default_value(1);
        register_child(&number);
        register_child(&text);
        register_child(&flag);
    }
    zr_asn_integer number{zr_normal};
    zr_asn_octetstring text{zr_normal};
    zr_asn_boolean flag{zr_normal};
};

TEST(sequence, reading) {
    // clang-format off
    static const struct { const char* octets; int status; long consumed; const char* rewritten; } table[] = {
        // Rewritten without the text, whose contents reading does not keep, and without the default.
        {"30 03 02 01 05 99", 0, 5, "30 03 02 01 05"}, {"30 06 02 01 05 01 01 00", 0, 8, "30 06 02 01 05 01 01 00"},
        {"30 06 02 01 05 01 01 01", 0, 8, "30 03 02 01 05"}, {"30 81 03 02 01 05", 0, 6, "30 03 02 01 05"},
        {"30 09 02 01 05 04 01 41 01 01 00", 0, 11, "30 08 02 01 05 04 00 01 01 00"},
        {"30 80 02 01 05 04 01 41 00 00 99", 0, 10, "30 05 02 01 05 04 00"},
        {"30 00", zr_err_data_ends_early, 0, absent}, {"30 80 00 00", zr_err_no_match, 0, absent},
        {"30 03 04 01 41", zr_err_no_match, 0, absent},
        {"30 06 01 01 00 02 01 05", zr_err_no_match, 0, absent},  // out of order
        {"30 06 02 01 05 05 01 00", zr_err_trailing_data, 0, absent},
        {"30 06 02 01 05 02 01 05", zr_err_trailing_data, 0, absent},
        {"30 04 02 01 05 01", zr_err_data_ends_early, 0, absent}, {"30 04 02 01 05", zr_err_data_ends_early, 0, absent},
        {"30 06 02 01 05 01 02 00 00", zr_err_data_ends_early, 0, absent},  // would end outside
        {"30 80 02 01 05", zr_err_bad_contents, 5, absent}, {"30 80 02 01 05 05 00 00 00", zr_err_bad_contents, 5, absent},
        {"10 03 02 01 05", zr_err_primitive_form, 0, absent}, {"31 03 02 01 05", zr_err_no_match, 0, absent}
    };
    // clang-format on
    record object;
    for (int times = 0; times < 2; ++times) {  // an object is used again
        for (const auto& row : table) {
            SCOPED_TRACE(row.octets);
            const auto result = read_from(object, row.octets);
            EXPECT_EQ(result.status, row.status);
            EXPECT_EQ(result.consumed, row.consumed);
            EXPECT_EQ(object.is_present(), row.status == 0 ? 1 : 0);
            EXPECT_EQ(object.number.is_present(), row.status == 0 ? 1 : 0);
            EXPECT_EQ(written(object), row.rewritten);
        }
    }
}

TEST(sequence, presence_and_caches) {
    record object;
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

// What a composite knows of its members survives that one is registered twice, put before the others, or handed to
// another composite.
TEST(composite, members_that_move) {
    for (const int empty_permitted : {0, 1}) {
        std::deque<zr_asn_boolean> members;
        while (members.size() < 4)
            members.emplace_back(zr_normal).set_optional(static_cast<int>(members.size()) % 2);
        zr_asn_sequence sequence(zr_normal), other(zr_normal);
        sequence.set_empty_permitted(empty_permitted);
        for (const size_t at : {0, 1, 2, 2})
            sequence.register_child(&members[at]);
        const auto present_after = [&](size_t at, bool set) {
            zr_asn_boolean& member = members[at];
            set ? member.set_value(1) : member.invalidate_value(zr_invalidate_all);
            return sequence.is_present();
        };
        const auto in_turns = [&](size_t mandatory) {
            EXPECT_EQ(present_after(mandatory, false), 0);
            EXPECT_EQ(present_after(0, true), 0);
            EXPECT_EQ(present_after(mandatory, true), 1);
            EXPECT_EQ(present_after(0, false), 1);
            EXPECT_EQ(present_after(mandatory, true), 1);
        };
        present_after(1, true);
        EXPECT_EQ(present_after(2, true), 1);
        in_turns(1);
        sequence.register_child_before(&members[3]);
        EXPECT_EQ(present_after(3, true), 1);
        in_turns(1);
        in_turns(3);
        other.register_child(&members[1]);
        EXPECT_EQ(other.is_present(), 1);
        in_turns(3);
        members[1].invalidate_value(zr_invalidate_all);
        EXPECT_EQ(other.is_present(), 0);
        members[1].set_value(1);
        EXPECT_EQ(other.is_present(), 1);
    }
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
