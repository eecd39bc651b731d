// Operations on a random tree of objects: the first four octets pick the tree and its changes, the fifth their number.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/tree_changes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    unsigned int seed = 0;
    if (size <= sizeof seed) return 0;
    std::memcpy(&seed, data, sizeof seed);
    zr_test::tree_history seen;
    const std::string fault = zr_test::change_and_compare(seed, 1 + data[sizeof seed] % 64, seen);
    if (fault.empty()) return 0;
    std::fprintf(stderr, "objects_fuzz: %s\n", fault.c_str());
    std::abort();
}
