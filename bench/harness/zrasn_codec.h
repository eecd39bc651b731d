// The library's plain entry points as a codec.
#pragma once

#include "asn1/zrasnapi.h"
#include "bench/harness/peer.h"

namespace bench {

template <class Workload>
struct zrasn_codec {
    using value = typename Workload::structure;
    using block = zr_asn_buffer_t;
    static constexpr bool enveloped = true;
    static constexpr bool same = true;

    static void make(value& record, octets) { record = sample<Workload>(); }
    static void unmake(value&) {}
    static bool encode(block& out, value& record) { return zrAsnEncodeObj(out, record) == 0; }
    static bool decode(octets in, value& record) {
        zr_asn_buffer_t buffer = {static_cast<unsigned>(in.length), const_cast<unsigned char*>(in.data)};
        return zrAsnDecodeObj(buffer, record) == 0;
    }
    static void release(block& encoding) { zr_asn_buffer_free(encoding); }
    static void release(value& record) { zrAsnFreeObj(record); }
};

}  // namespace bench
