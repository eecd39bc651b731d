// What the codecs of the peers that speak BER have in common.
#pragma once

#include <cstdlib>
#include <cstring>

#include "bench/harness/peer.h"

namespace bench {

// heap_block is an encoding in a block of its own.
struct heap_block {
    unsigned char* data;
    size_t length;
};

inline bool copy_to_heap(heap_block& block, const void* data, size_t length) {
    block = {static_cast<unsigned char*>(std::malloc(length)), length};
    if (block.data == nullptr) return false;
    std::memcpy(block.data, data, length);
    return true;
}

// Room for the peers that write into memory of a fixed size, which the caller provides.
constexpr size_t scratch_size = 1 << 20;

inline unsigned char* scratch() {
    static unsigned char room[scratch_size];
    return room;
}

template <class Codec>
struct ber_codec {
    using block = heap_block;
    static constexpr bool enveloped = false;
    static constexpr bool same = true;

    template <class Value>
    static void make(Value& value, octets reference) {
        Codec::decode(reference, value);
    }
    template <class Value>
    static void unmake(Value& value) {
        Codec::release(value);
    }
    static void release(heap_block& encoding) { std::free(encoding.data); }
};

}  // namespace bench
