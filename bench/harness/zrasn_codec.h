// The library as a codec: its plain entry points, strict and packed decoding, and the binding classes.
#pragma once

#include "asn1/record/binding.h"
#include "asn1/zrasnapi.h"
#include "bench/harness/peer.h"
#include "zrasn/decode.h"

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
struct strict_codec : zrasn_codec<Workload> {
    using typename zrasn_codec<Workload>::value;

    static bool decode(octets in, value& record) {
        zr::decode_options options;
        options.strict = true;
        zr::decode_report report;
        return zr::decode(in.data, in.length, record, options, report) == 0;
    }
};

// Records in one block: released at once, or kept for the next decode.
template <class Workload, bool kept>
struct packed_codec : zrasn_codec<Workload> {
    using structure = typename Workload::structure;
    using typename zrasn_codec<Workload>::block;
    struct value {
        const structure* record = nullptr;
        zr::packed<structure> own;
    };

    static void make(value& made, octets) { made.record = &sample<Workload>(); }
    static void unmake(value&) {}
    static bool encode(block& out, value& made) { return zrAsnEncodeObj(out, *made.record) == 0; }
    static bool decode(octets in, value& made) {
        zr::packed<structure>& packed = place_of(made);
        made.record = &*packed;
        return packed.decode(zrasn_codec<Workload>::buffer_of(in)) == 0;
    }
    static void release(block& encoding) { zr_asn_buffer_free(encoding); }
    static void release(value& made) { kept ? place_of(made).clear() : made.own.release(); }

private:
    static zr::packed<structure>& place_of(value& made) {
        static zr::packed<structure> kept_place;
        return kept ? kept_place : made.own;
    }
};

template <class Workload>
struct zrasn_peers {
    codec_peer<zrasn_codec<Workload>> plain{Workload::name, library};
    codec_peer<binding_codec<Workload>> bound{Workload::name, "bindings"};
    codec_peer<strict_codec<Workload>> strict{Workload::name, "strict"};
    codec_peer<packed_codec<Workload, false>> packed{Workload::name, "zrasn, packed"};
    codec_peer<packed_codec<Workload, true>> kept{Workload::name, "zrasn, kept block"};
};

}  // namespace bench
