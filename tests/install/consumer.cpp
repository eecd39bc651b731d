// A program of somebody else's: knows the library only by its public headers.
#include <cstdio>
#include <cstring>

#include "asn1/zrasnapi.h"
#include "base_idls/zrnbase_asn.h"

int main() {
    uuid_t in = {0xffffffff, 0x8000, 0x7f, 0, 0xff, {1, 2, 3, 4, 5, 6}};
    uuid_t out = {};
    zr_asn_buffer_t encoded = {};
    if (zrAsnEncodeObj(encoded, in) != 0) return 1;
    int status = zrAsnDecodeObj(encoded, out);
    bool same = in.time_low == out.time_low && in.time_mid == out.time_mid &&
                in.time_hi_and_version == out.time_hi_and_version &&
                in.clock_seq_hi_and_reserved == out.clock_seq_hi_and_reserved &&
                in.clock_seq_low == out.clock_seq_low && std::memcmp(in.node, out.node, sizeof in.node) == 0;
    zrAsnFreeObj(out);
    zr_asn_buffer_free(encoded);
    std::puts(same ? "same" : "different");
    return status == 0 && same ? 0 : 1;
}
