// Random changes of a random tree of objects: whatever happened to it, it is written like a new one with the same
// values.
#pragma once

#include "support/random_tree.h"

// Behind the first, whose parameters are named as a type in it.
#include "support/ber_rewriter.h"

namespace zr_test {

// How much was looked at.
struct tree_history {
    unsigned int compared = 0, complete = 0, reads = 0;
};

// Takes so many steps; answers with what is wrong and what went before, or nothing.
inline std::string change_and_compare(unsigned int seed, int steps, tree_history& seen) {
    random_tree tree(seed);
    zr_asn_object& live = tree.make_complete();
    std::string history;
    const auto differs = [&history](const std::string& one, const std::string& other) {
        if (one != other) history.insert(0, one + " instead of " + other + " after");
        return one != other;
    };
    for (int step = 0; step < steps; ++step) {
        if (tree.below(12) == 0) {
            const std::string encoding = written(tree.make_complete());
            zr_asn_object& fresh = tree.make_objects();
            if (read(live, encoding) != 0 || read(fresh, encoding) != 0)
                return history.insert(0, encoding + " is refused after");
            if (differs(written(tree.make_copy(live)), written(tree.make_copy(fresh)))) return history;
            history += " read";
            ++seen.reads;
        } else {
            history += " " + tree.change(live);
        }
        if (tree.below(2) == 0) continue;  // several changes before the caches are filled
        const std::string expected = written(tree.make_copy(live));
        for (int time = 0; time < 2; ++time)
            if (differs(written(live), expected)) return history;
        ++seen.compared;
        if (expected.find(' ') == std::string::npos) continue;
        ++seen.complete;
        parse_ber(bytes(expected));  // throws unless it is one whole value
    }
    return "";
}

}  // namespace zr_test
