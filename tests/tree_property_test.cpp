// Random trees of all types: whatever happened to a tree, it is written like a new one with the same values.
#include <gtest/gtest.h>

#include "support/tree_changes.h"

namespace zr_test {
namespace {

TEST(trees, changes_are_seen_by_the_next_encoding) {
    tree_history seen;
    for (unsigned int seed = 0; seed < 600; ++seed)
        ASSERT_EQ(change_and_compare(seed, 40, seen), "") << "seed " << seed;
    EXPECT_GT(seen.compared, 5000U);
    EXPECT_GT(seen.complete, seen.compared / 4);
    EXPECT_GT(seen.reads, 500U);
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
