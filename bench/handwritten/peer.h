// The hand-written coders as a peer, and beside it the floor: allocating and releasing the same blocks, nothing else.
#pragma once

#include "bench/handwritten/blocks.h"
#include "bench/handwritten/decode.h"
#include "bench/harness/peer.h"

namespace bench {

// Encode is the encoder that is the fastest at this workload.
template <class Workload, bool (*Encode)(zr_asn_buffer_t&, const typename Workload::structure&)>
struct handwritten_codec {
    using value = typename Workload::structure;
    using block = zr_asn_buffer_t;
    static constexpr bool enveloped = true;
    static constexpr bool same = true;

    static void make(value& record, octets) { record = sample<Workload>(); }
    static void unmake(value&) {}
    static bool encode(block& out, value& record) { return Encode(out, record); }
    static bool decode(octets in, value& record) {
        return bench::decode({static_cast<unsigned>(in.length), const_cast<unsigned char*>(in.data)}, record);
    }
    static void release(block& encoding) { std::free(encoding.data); }
    static void release(value& record) { bench::release(record); }
};

template <class Workload>
class floor_peer : public peer {
public:
    floor_peer() : peer(Workload::name, "floor") {}

    std::string reference() override { return {}; }
    std::string accept(octets reference) override {
        using codec = handwritten_codec<Workload, nullptr>;
        typename Workload::structure record{};
        if (!codec::decode(reference, record)) return "does not decode";
        blocks(floor_, record);
        codec::release(record);
        encoded_length_ = reference.length;
        return {};
    }
    size_t encoded_length() const override { return encoded_length_; }
    void prepare() override {}
    void finish() override {}
    void encode(size_t times) override {
        for (; times != 0; --times)
            allocate_once(encoded_length_);
    }
    void decode(size_t times) override {
        for (; times != 0; --times)
            floor_.run();
    }

private:
    floor_of floor_;
    size_t encoded_length_ = 0;
};

// The two peers of a workload's handwritten.cpp.
template <class Workload, bool (*Encode)(zr_asn_buffer_t&, const typename Workload::structure&)>
struct handwritten_peers {
    codec_peer<handwritten_codec<Workload, Encode>> coder{Workload::name, "hand-written"};
    floor_peer<Workload> floor;
};

}  // namespace bench
