// The open source ASN.1 compiler asn1c.
#pragma once

#include "bench/peers/ber_codec.h"

// It asks for an old name of the C library's defaults, which is heard only when it comes first.
#include <asn_application.h>

namespace bench {

constexpr const char* asn1c = "asn1c";

template <class T, asn_TYPE_descriptor_t& Type>
struct asn1c_codec : ber_codec<asn1c_codec<T, Type>> {
    using base = ber_codec<asn1c_codec<T, Type>>;
    using base::release;
    using value = T*;

    static bool encode(heap_block& block, T*& record) {
        const asn_enc_rval_t done = der_encode_to_buffer(&Type, record, scratch(), scratch_size);
        return done.encoded >= 0 && copy_to_heap(block, scratch(), static_cast<size_t>(done.encoded));
    }
    static bool decode(octets in, T*& record) {
        void* decoded = nullptr;
        const asn_dec_rval_t done = ber_decode(nullptr, &Type, &decoded, in.data, in.length);
        record = static_cast<T*>(decoded);
        return done.code == RC_OK;
    }
    static void release(T*& record) {
        Type.free_struct(&Type, record, 0);
        record = nullptr;
    }
};

}  // namespace bench
