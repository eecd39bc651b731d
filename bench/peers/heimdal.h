// Heimdal's ASN.1 compiler.
#pragma once

#include <cstdint>

#include "bench/peers/ber_codec.h"

extern "C" {
#include <forward.h>
#include <records.h>
}

namespace bench {

constexpr const char* heimdal = "Heimdal";

template <class T, int (*Encode)(unsigned char*, size_t, const T*, size_t*),
          int (*Decode)(const unsigned char*, size_t, T*, size_t*), size_t (*Length)(const T*), void (*Free)(T*)>
struct heimdal_codec : ber_codec<heimdal_codec<T, Encode, Decode, Length, Free>> {
    using base = ber_codec<heimdal_codec<T, Encode, Decode, Length, Free>>;
    using base::release;
    using value = T;

    static bool encode(heap_block& block, T& record) {
        const size_t length = Length(&record);
        block = {static_cast<unsigned char*>(std::malloc(length)), length};
        size_t written;
        return block.data != nullptr && Encode(block.data + length - 1, length, &record, &written) == 0;
    }
    static bool decode(octets in, T& record) {
        size_t consumed;
        return Decode(in.data, in.length, &record, &consumed) == 0;
    }
    static void release(T& record) { Free(&record); }
};

}  // namespace bench
