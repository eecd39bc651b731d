// One UUID: the smallest record, where every fixed cost shows.
#pragma once

#include "base_idls/zrnbase_asn.h"
#include "bench/harness/builder.h"

namespace bench {

inline uuid_t make_uuid(builder& make) {
    uuid_t uuid{};
    uuid.time_low = make.number(UINT32_MAX);
    uuid.time_mid = static_cast<uint16_t>(make.number(0x10000));
    uuid.time_hi_and_version = static_cast<uint16_t>(0x1000 | make.number(0x1000));
    uuid.clock_seq_hi_and_reserved = static_cast<uint8_t>(0x80 | make.number(0x40));
    uuid.clock_seq_low = static_cast<uint8_t>(make.number(0x100));
    for (unsigned char& octet : uuid.node)
        octet = static_cast<unsigned char>(make.number(0x100));
    return uuid;
}

struct uuid_workload {
    using structure = uuid_t;
    static constexpr const char* name = "uuid";
    static uuid_t make(builder& make) { return make_uuid(make); }
};

}  // namespace bench
