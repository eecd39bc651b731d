// OpenSSL's ASN.1 templates.
#pragma once

#include <openssl/asn1t.h>

#include "bench/peers/ber_codec.h"

namespace bench {

constexpr const char* openssl = "OpenSSL";

// The records are defined in openssl.c; only pointers to them are handled here.
extern "C" {
DECLARE_ASN1_ITEM(Uuid)
DECLARE_ASN1_ITEM(AttrList)
DECLARE_ASN1_ITEM(DecisionRequest)
DECLARE_ASN1_ITEM(Acl)
DECLARE_ASN1_ITEM(AuditEvent)
DECLARE_ASN1_ITEM(ObjectList)
}
struct Uuid;
struct AttrList;
struct DecisionRequest;
struct Acl;
struct AuditEvent;
struct ObjectList;

template <class T, const ASN1_ITEM* (*Item)()>
struct openssl_codec : ber_codec<openssl_codec<T, Item>> {
    using base = ber_codec<openssl_codec<T, Item>>;
    using base::release;
    using value = ASN1_VALUE*;

    static bool encode(heap_block& block, ASN1_VALUE*& record) {
        block.data = nullptr;
        const int length = ASN1_item_i2d(record, &block.data, Item());
        block.length = static_cast<size_t>(length);
        return length > 0;
    }
    static bool decode(octets in, ASN1_VALUE*& record) {
        const unsigned char* at = in.data;
        record = ASN1_item_d2i(nullptr, &at, static_cast<long>(in.length), Item());
        return record != nullptr;
    }
    static void release(heap_block& encoding) { OPENSSL_free(encoding.data); }
    static void release(ASN1_VALUE*& record) { ASN1_item_free(record, Item()); }
};

}  // namespace bench
