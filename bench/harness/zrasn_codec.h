// The library as a codec: its plain entry points, the forms for the local code set, and the binding classes.
#pragma once

#include "asn1/record/binding.h"
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
        block buffer = buffer_of(in);
        return zrAsnDecodeObj(buffer, record) == 0;
    }
    static void release(block& encoding) { zr_asn_buffer_free(encoding); }
    static void release(value& record) { zrAsnFreeObj(record); }

    static block buffer_of(octets in) {
        return {static_cast<unsigned>(in.length), const_cast<unsigned char*>(in.data)};
    }
};

// The process's locale is "C", which is ASCII like the texts that are measured.
template <class Workload>
struct local_codec : zrasn_codec<Workload> {
    using typename zrasn_codec<Workload>::value;
    using typename zrasn_codec<Workload>::block;

    static bool encode(block& out, value& record) { return zrAsnEncodeObjLCS(out, record) == 0; }
    static bool decode(octets in, value& record) {
        block buffer = zrasn_codec<Workload>::buffer_of(in);
        return zrAsnDecodeObjLCS(buffer, record) == 0;
    }
};

// A binding object for each encoding and each decoding.
template <class Workload>
struct binding_codec : zrasn_codec<Workload> {
    using typename zrasn_codec<Workload>::value;
    using typename zrasn_codec<Workload>::block;
    static constexpr int version = 2;

    static bool encode(block& out, value& record) {
        zr::binding<value> binding(zr_normal);
        return binding.set_value(record) == 0 && zr_asnbase::saveEncoding(binding, version, out) == 0;
    }
    static bool decode(octets in, value& record) {
        zr::binding<value> binding(zr_normal);
        block buffer = zrasn_codec<Workload>::buffer_of(in);
        return zr_asnbase::loadObject(binding, version, buffer) == 0 && binding.get_value(record) == 0;
    }
};

template <class Workload>
struct zrasn_peers {
    codec_peer<zrasn_codec<Workload>> plain{Workload::name, library};
    codec_peer<local_codec<Workload>> local{Workload::name, "LCS forms"};
    codec_peer<binding_codec<Workload>> bound{Workload::name, "bindings"};
};

}  // namespace bench
