// Schema module zrnbase_asn: the UUID.
#pragma once

#include "asn1/record/record.h"

// uuid_t is a UUID in the DCE layout (RFC 4122, 4.1.2). A system header declares another uuid_t (<uuid/uuid.h>). A source
// that needs both gives that one another name, before it includes this header or any that includes it:
//     #define uuid_t other_uuid_t
//     #include <uuid/uuid.h>
//     #undef uuid_t
struct uuid_t {
    uint32_t time_low;
    uint16_t time_mid;
    uint16_t time_hi_and_version;
    uint8_t clock_seq_hi_and_reserved;
    uint8_t clock_seq_low;
    uint8_t node[6];
};
ZR_RECORD(zrnbase_asn, uuid_t, asn_uuid_t,
          zr::integer(ZR_M(time_low)),
          zr::integer(ZR_M(time_mid)),
          zr::integer(ZR_M(time_hi_and_version)),
          zr::integer(ZR_M(clock_seq_hi_and_reserved)),
          zr::integer(ZR_M(clock_seq_low)),
          zr::fixed_octets(ZR_M(node)));
