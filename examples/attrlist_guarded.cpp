// An attribute list there and back, with guards: nothing is left to be remembered.
#include <cstdio>

#include "base_idls/attrlist_asn.h"
#include "zrasn/guard.h"

static int there_and_back(attrlist_s_t& list) {
    zr::encoding octets;
    if (int status = zrAsnEncodeObj(octets.out(), list)) return status;
    std::printf("%u octets\n", octets.size());

    zr::decoded<attrlist_s_t> copy;
    if (int status = zrAsnDecodeObj(octets.in(), copy.out())) return status;
    for (uint32_t i = 0; i < copy->attr_count; i++) {
        const attr_s_t& attr = copy->attrs[i];
        std::printf("%s:", attr.name);
        for (uint32_t j = 0; j < attr.value_count; j++)
            std::printf(" %s", attr.values[j].str);
        std::printf("\n");
    }
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
