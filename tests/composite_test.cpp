// Composites: how presence follows from the members, the table of members, depth and cost.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "support/allocations.h"
#include "support/ber.h"

namespace {

using zr_test::input;
using zr_test::read;
using zr_test::written;

struct sequence : zr_asn_sequence {
    using zr_asn_sequence::zr_asn_sequence;
    void allow_indefinite() { indefinite_permitted_ = 1; }
    void make_constructed() { generate_constructed_ = 1; }
};

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
            const node& chosen = nodes_[at];
            const std::string what = operate(chosen);
            if (what.empty()) continue;
            for (size_t i = 0; i < nodes_.size(); ++i) {
                const zr_asn_object& ours = *nodes_[i].ours;
                const zr_asn_object& plain = *nodes_[i].plain;
                ASSERT_EQ(ours.is_present(), plain.is_present()) << what << " on " << at << ", seen at " << i;
                ASSERT_EQ(ours.is_encoding_valid(), plain.is_encoding_valid()) << what << " on " << at << " at " << i;
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
        bool leaf;
    };

    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }

    template <class Ours, class Plain>
    node keep(bool leaf) {
        auto ours = std::make_unique<Ours>(zr_normal);
        auto plain = std::make_unique<Plain>(zr_normal);
        const node made{ours.get(), plain.get(), leaf};
        owned_.push_back(std::move(ours));
        owned_.push_back(std::move(plain));
        return made;
    }

    node grow_pair(int depth) {
        if (depth > 0 && (depth > 4 || below(2) != 0)) {
            const node leaf = keep<zr_asn_boolean, zr_asn_boolean>(true);
            nodes_.push_back(leaf);
            return leaf;
        }
        const node made = keep<zr_asn_sequence, plain_sequence>(false);
        nodes_.push_back(made);
        const size_t members = below(6);
        if (below(3) == 0) on_both(made, [](zr_asn_object& o) { o.set_empty_permitted(0); });
        for (size_t i = 0; i < members; ++i) {
            const node child = grow_pair(depth + 1);
            const size_t kind = below(4);
            if (kind == 0) on_both(child, [](zr_asn_object& o) { o.set_optional(1); });
            if (kind == 1) set_default(child, 1);
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

    static void set_default(const node& n, int value) {
        if (!n.leaf) return;
        on_both(n, [&](zr_asn_object& o) { static_cast<zr_asn_boolean&>(o).set_default_value(value); });
    }

    // Some operations leave a composite absent that a new look would find present (marking a member as optional tells
    // nobody), and whether an outer one is looked at again is told only when the inner one's presence changes. The two
    // need to agree where nothing old is left.
    void look_again() {
        for (size_t i = nodes_.size(); i-- != 0;)
            on_both(nodes_[i], [](zr_asn_object& o) { o.check_valid(0); });
    }

    std::string operate(const node& n) {
        const int value = static_cast<int>(below(2));
        switch (below(14)) {
            case 0:
            case 1:
            case 2:
            case 3:
            case 4:
                if (!n.leaf) return "";
                on_both(n, [&](zr_asn_object& o) { static_cast<zr_asn_boolean&>(o).set_value(value); });
                return "set_value";
            case 5:
                on_both(n, [](zr_asn_object& o) { o.invalidate_value(zr_invalidate_all); });
                return "invalidate_value(2)";
            case 6:
                on_both(n, [](zr_asn_object& o) { o.invalidate_value(zr_invalidate_own); });
                return "invalidate_value(1)";
            case 7:
                on_both(n, [](zr_asn_object& o) { o.empty(); });
                return "empty";
            case 8:
                on_both(n, [&](zr_asn_object& o) { o.set_empty_permitted(value); });
                return "set_empty_permitted";
            case 9:
                on_both(n, [](zr_asn_object& o) { static_cast<void>(o.is_valid(1)); });
                return "is_valid(1)";
            case 10: {
                std::string octets;
                on_both(roots_, [&](zr_asn_object& o) { octets = written(o); });
                if (octets.size() % 3 != 2) return "asnwrite";  // nothing, or a status
                on_both(roots_, [&](zr_asn_object& o) { read(o, octets); });
                return "asnread";
            }
            case 11:
                on_both(n, [&](zr_asn_object& o) { o.set_optional(value); });
                return "set_optional";
            case 12:
                if (!n.leaf) return "";
                set_default(n, value);
                return "set_default_value";
            default:
                on_both(n, [](zr_asn_object& o) { o.check_valid(0); });
                return "check_valid";
        }
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

}  // namespace
