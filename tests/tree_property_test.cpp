// Random trees of all types: whatever happened to a tree, it is written like a new one with the same values; and what
// is written is what another reader of BER sees.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "support/random_tree.h"

namespace zr_test {
namespace {

TEST(trees, changes_are_seen_by_the_next_encoding) {
    unsigned int compared = 0, complete = 0, reads = 0;
    for (unsigned int seed = 0; seed < 600 && !HasFatalFailure(); ++seed) {
        random_tree tree(seed);
        value held = tree.make_value(true);
        zr_asn_object& live = tree.make_objects(held);
        std::string history;
        for (int step = 0; step < 40; ++step) {
            if (tree.below(12) == 0) {
                const value other = tree.make_value(true);
                const std::string octets = written(tree.make_objects(other));
                ASSERT_EQ(read(live, octets), 0) << "seed " << seed << " " << octets;
                held = tree.as_read(other, held);
                history += " read";
                ++reads;
            } else {
                history += " " + tree.change(held, live);
            }
            if (tree.below(2) == 0) continue;  // several changes before the caches are filled
            const std::string expected = written(tree.make_objects(held));
            ASSERT_EQ(written(live), expected) << "seed " << seed << history;
            ASSERT_EQ(written(live), expected) << "again, seed " << seed << history;
            ++compared;
            if (expected.find(' ') != std::string::npos) ++complete;
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
    const std::string octets = written(root);
    EXPECT_EQ(counting::encoded, 20);
    EXPECT_EQ(written(root), octets);
    EXPECT_EQ(counting::encoded, 20);
    EXPECT_EQ(root.check_encode_flags(1), 1);
    second[3]->set_value(0);
    EXPECT_EQ(first.is_encoding_valid(), 1);
    EXPECT_NE(written(root), octets);
    EXPECT_EQ(counting::encoded, 21);
}

// The line for an element: where it stands, how deep, its length, form and identifier, as `openssl asn1parse` names it.
std::string described(long offset, int depth, long header, long length, const std::string& form,
                      const std::string& name) {
    return std::to_string(offset) + " d=" + std::to_string(depth) + " hl=" + std::to_string(header) +
           " l=" + std::to_string(length) + " " + form + " " + name + "\n";
}

// The lines as the objects tell them, not their encoding.
class lister {
public:
    std::string list(const shape& form, zr_asn_object& object) {
        visit(form, object, 0);
        return text_;
    }

private:
    void line(int depth, unsigned int header, unsigned int length, bool constructed, int cls, unsigned int tag) {
        static const char* const names[] = {"", "BOOLEAN", "INTEGER", "BIT STRING", "OCTET STRING", "NULL"};
        static const char* const classes[] = {"", "appl", "cont", "priv"};
        const std::string universal = tag == 16 ? "SEQUENCE" : tag < std::size(names) ? names[tag] : "";
        const std::string name = cls == 0 ? universal : classes[cls] + (" [ " + std::to_string(tag) + " ]");
        text_ += described(offset_, depth, header, length, constructed ? "cons" : "prim", name);
        offset_ += header;
    }

    void visit(const shape& form, zr_asn_object& object, int depth) {
        zr_buffer_t whole(zr_normal);
        if (object.asnwrite(whole) != 0 || whole.length() == 0) return;
        if (form.type == kind::choice) {
            const auto& choice = static_cast<zr_asn_choice&>(object);
            const auto at = static_cast<unsigned int>(choice.selected());
            return visit(form.members[at], *choice.get_child(at), depth);
        }
        zr_asn_object& shown = form.type == kind::array ? children(object, form.type) : object;
        zr_buffer_t contents(zr_normal);
        ASSERT_EQ(shown.get_encoding(contents), 0);
        const unsigned int length = contents.length();
        const bool constructed = shown.should_generate_constructed() != 0;
        line(depth, whole.length() - length, length, constructed, shown.get_class(), shown.get_tag());
        if (is_leaf(form.type)) {
            if (constructed) line(depth + 1, 2, length - 2, false, 3, 5);  // the one element inside an ANY
            offset_ += constructed ? length - 2 : length;
            return;
        }
        auto& composite = children(object, form.type);
        for (unsigned int i = 0; composite.get_child(i) != nullptr; ++i)
            visit(member_shape(form, i), *composite.get_child(i), depth + 1);
    }

    std::string text_;
    long offset_ = 0;
};

// The same lines from openssl; empty when it refuses the file.
std::string parsed_by_openssl(const std::string& path) {
    std::string text;
    FILE* pipe = popen(("openssl asn1parse -inform DER -in " + path + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return text;
    char buffer[4096];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
        long offset = 0, header = 0, length = 0;
        int depth = 0;
        char form[5] = {}, name[64] = {};
        if (std::sscanf(buffer, " %ld:d=%d hl=%ld l=%ld %4[a-z]: %63[^:\n]", &offset, &depth, &header, &length, form,
                        name) != 6)
            continue;
        std::string trimmed(name);
        trimmed.erase(std::min(trimmed.find("  "), trimmed.size()));  // what follows is its contents
        text += described(offset, depth, header, length, form, trimmed);
    }
    return pclose(pipe) == 0 ? text : "";
}

TEST(trees, openssl_sees_the_same_elements) {
    if (std::system("command -v openssl > /dev/null 2>&1") != 0) GTEST_SKIP() << "openssl is not installed";
    const std::string path = testing::TempDir() + "zrasn_tree_" + std::to_string(getpid()) + ".ber";
    size_t lines = 0;
    for (unsigned int seed = 0; seed < 60; ++seed) {
        random_tree tree(seed);
        zr_asn_object& root = tree.make_objects(tree.make_value(true));
        zr_buffer_t output(zr_normal);
        ASSERT_EQ(root.asnwrite(output), 0);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(output.data()), static_cast<std::streamsize>(output.length()));
        const std::string expected = lister().list(tree.form(), root);
        EXPECT_EQ(parsed_by_openssl(path), expected) << "seed " << seed << " " << hex(output);
        lines += static_cast<size_t>(std::count(expected.begin(), expected.end(), '\n'));
    }
    std::remove(path.c_str());
    EXPECT_GT(lines, 600U);
}

}  // namespace
}  // namespace zr_test
