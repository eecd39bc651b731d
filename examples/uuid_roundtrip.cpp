#include <cstdio>

#include "asn1/zrasnapi.h"
#include "base_idls/zrnbase_asn.h"

int main() {
    uuid_t id = {0x6ba7b810, 0x9dad, 0x11d1, 0x80, 0xb4, {0x00, 0xc0, 0x4f, 0xd4, 0x30, 0xc8}}, back = {};
    zr_asn_buffer_t encoded = {};
    if (zrAsnEncodeObj(encoded, id) != 0 || zrAsnDecodeObj(encoded, back) != 0) return 1;
    for (unsigned int i = 0; i < encoded.length; i++)
        std::printf("%s%02x", i == 0 ? "" : i % 16 == 0 ? "\n" : " ", encoded.data[i]);
    std::printf("\n%08lx-%04x-%04x-%02x%02x-", static_cast<unsigned long>(back.time_low), back.time_mid,
                back.time_hi_and_version, back.clock_seq_hi_and_reserved, back.clock_seq_low);
    for (unsigned int octet : back.node)
        std::printf("%02x", octet);
    std::printf("\n");
    zrAsnFreeObj(back);
    zr_asn_buffer_free(encoded);
}
