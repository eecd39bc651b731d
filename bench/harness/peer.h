// One way of encoding and decoding, at one workload: what the runner checks, times and counts.
#pragma once

#include <string>
#include <vector>

#include "bench/harness/builder.h"

namespace bench {

struct octets {
    const unsigned char* data;
    size_t length;
};

// The four octets before every encoding of the library.
constexpr size_t envelope_length = 4;

// peer is what the runner sees of a codec.
class peer {
public:
    peer(const char* at, const char* called) : workload(at), name(called) { all().push_back(this); }
    virtual ~peer() = default;
    peer(const peer&) = delete;
    peer& operator=(const peer&) = delete;

    // reference gives the encoding that the peer makes of the workload's own record; the library's is asked for.
    virtual std::string reference() = 0;
    // accept takes the library's octets of the workload, makes from them what the peer encodes and decodes, and checks
    // both. It returns an empty text, or what is wrong.
    virtual std::string accept(octets reference) = 0;
    virtual size_t encoded_length() const = 0;
    // prepare makes the record that is encoded, which finish releases.
    virtual void prepare() = 0;
    virtual void finish() = 0;
    // encode and decode do their work `times` times, each time releasing what they made.
    virtual void encode(size_t times) = 0;
    virtual void decode(size_t times) = 0;

    const char* const workload;
    const char* const name;

    static std::vector<peer*>& all() {
        static std::vector<peer*> peers;
        return peers;
    }
};

// The library's peer gives the octets that all others are compared with.
constexpr const char* library = "zrasn";

// keep makes the compiler believe that `p` and what it points to are used.
inline void keep(const void* p) { asm volatile("" : : "r"(p) : "memory"); }

// codec_peer is the peer over a Codec, which names its form of the workload's record and of an encoding and has
//   value     the record in the codec's own form; value() is an empty one
//   block     an encoding in a heap block, with the members data and length
//   static bool encode(block&, value&), decode(octets, value&)
//   static void release(block&), release(value&)
//   static void make(value&, octets)
//             makes the record to encode, given the library's octets; static void unmake(value&) releases it
//   enveloped whether encodings begin with the library's envelope
//   same      whether encodings are the library's octets
template <class Codec>
class codec_peer : public peer {
public:
    codec_peer(const char* at, const char* called) : peer(at, called) {}

    std::string reference() override {
        std::string encoding;
        prepare();
        encoding_of(record_, encoding);
        finish();
        return encoding;
    }

    std::string accept(octets reference) override {
        if (!Codec::enveloped) reference = {reference.data + envelope_length, reference.length - envelope_length};
        reference_.assign(reinterpret_cast<const char*>(reference.data), reference.length);
        std::string encoding;
        prepare();
        const bool encoded = encoding_of(record_, encoding);
        finish();
        if (!encoded) return "does not encode";
        if (Codec::same && encoding != reference_) return "encodes other octets";

        input_ = encoding;
        typename Codec::value value{};
        if (!Codec::decode(view(input_), value)) return "does not decode";
        const bool again = encoding_of(value, encoding);
        Codec::release(value);
        return again && encoding == input_ ? "" : "decodes other values";
    }

    size_t encoded_length() const override { return input_.size(); }
    void prepare() override { Codec::make(record_, view(reference_)); }
    void finish() override { Codec::unmake(record_); }

    void encode(size_t times) override {
        for (; times != 0; --times) {
            typename Codec::block block{};
            Codec::encode(block, record_);
            keep(block.data);
            Codec::release(block);
        }
    }

    void decode(size_t times) override {
        for (; times != 0; --times) {
            typename Codec::value value{};
            Codec::decode(view(input_), value);
            keep(&value);
            Codec::release(value);
        }
    }

private:
    static octets view(const std::string& s) { return {reinterpret_cast<const unsigned char*>(s.data()), s.size()}; }

    static bool encoding_of(typename Codec::value& value, std::string& encoding) {
        typename Codec::block block{};
        if (!Codec::encode(block, value)) return false;
        encoding.assign(reinterpret_cast<const char*>(block.data), block.length);
        Codec::release(block);
        return true;
    }

    std::string reference_;
    std::string input_;  // the peer's own encoding
    typename Codec::value record_{};
};

// sample is the workload's record; Workload has structure, name and make.
template <class Workload>
typename Workload::structure& sample() {
    static builder made_by;
    static typename Workload::structure made = Workload::make(made_by);
    return made;
}

}  // namespace bench
