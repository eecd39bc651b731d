// Random trees of all types: whatever happened to a tree, it is written like a new one with the same values.
#include <gtest/gtest.h>

#include "support/random_tree.h"

#include "support/ber_rewriter.h"

namespace zr_test {
namespace {

TEST(trees, changes_are_seen_by_the_next_encoding) {
    unsigned int compared = 0, complete = 0, reads = 0;
    for (unsigned int seed = 0; seed < 600 && !HasFatalFailure(); ++seed) {
        random_tree tree(seed);
        zr_asn_object& live = tree.make_complete();
        std::string history;
        for (int step = 0; step < 40; ++step) {
            if (tree.below(12) == 0) {
                const std::string encoding = written(tree.make_complete());
                zr_asn_object& fresh = tree.make_objects();
                ASSERT_EQ(read(live, encoding), 0) << "seed " << seed << " " << encoding;
                ASSERT_EQ(read(fresh, encoding), 0);
                ASSERT_EQ(written(tree.make_copy(live)), written(tree.make_copy(fresh))) << "seed " << seed << history;
                history += " read";
                ++reads;
            } else {
                history += " " + tree.change(live);
            }
            if (tree.below(2) == 0) continue;  // several changes before the caches are filled
            const std::string expected = written(tree.make_copy(live));
            ASSERT_EQ(written(live), expected) << "seed " << seed << history;
            ASSERT_EQ(written(live), expected) << "again, seed " << seed << history;
            ++compared;
            if (expected.find(' ') == std::string::npos) continue;
            ++complete;
            ASSERT_NO_THROW(parse_ber(bytes(expected))) << "seed " << seed << history;
        }
    }
    EXPECT_GT(compared, 5000U);
    EXPECT_GT(complete, compared / 4);
    EXPECT_GT(reads, 500U);
}

struct counting : zr_asn_boolean {
    using zr_asn_boolean::zr_asn_boolean;
    int encode_value(zr_buffer_t& output) const override { return ++encoded, zr_asn_boolean::encode_value(output); }
    static inline int encoded = 0;
};

TEST(trees, unchanged_parts_are_copied) {
    zr_asn_sequence root(zr_normal);
    zr_asn_sequenceof<counting> first(zr_normal), second(zr_normal);
    for (auto* list : {&first, &second}) {
        root.register_child(list);
        for (int i = 0; i < 10; ++i)
            list->add_child()->set_value(1);
    }
    const std::string encoding = written(root);
    EXPECT_EQ(counting::encoded, 20);
    EXPECT_EQ(written(root), encoding);
    EXPECT_EQ(counting::encoded, 20);
    EXPECT_EQ(root.check_encode_flags(1), 1);
    second[3]->set_value(0);
    EXPECT_EQ(first.is_encoding_valid(), 1);
    EXPECT_NE(written(root), encoding);
    EXPECT_EQ(counting::encoded, 21);
}

}  // namespace
}  // namespace zr_test
