// An attribute list there and back, without guards: every way out releases what was allocated until then.
#include <cstdio>

#include "base_idls/attrlist_asn.h"

static int there_and_back(attrlist_s_t& list) {
    zr_asn_buffer_t octets = {};
    int status = zrAsnEncodeObj(octets, list);
    if (status != 0) return status;  // nothing was allocated
    std::printf("%u octets\n", octets.length);

    attrlist_s_t copy = {};
    status = zrAsnDecodeObj(octets, copy);
    zr_asn_buffer_free(octets);
    if (status != 0) {
        zrAsnFreeObj(copy);
        return status;
    }
    for (uint32_t i = 0; i < copy.attr_count; i++) {
        const attr_s_t& attr = copy.attrs[i];
        std::printf("%s:", attr.name);
        for (uint32_t j = 0; j < attr.value_count; j++)
            std::printf(" %s", attr.values[j].str);
        std::printf("\n");
    }
    zrAsnFreeObj(copy);
    return 0;
}

int main() {
    // The texts and arrays here are the program's own: nothing to release.
    char members[] = "members", alice[] = "alice", bob[] = "bob", owner[] = "owner";
    value_s_t both[] = {{0, alice, 0, nullptr}, {0, bob, 0, nullptr}};
    attr_s_t attrs[] = {{members, 2, both}, {owner, 1, both}};
    attrlist_s_t list = {2, attrs};
    return there_and_back(list) == 0 ? 0 : 1;
}
