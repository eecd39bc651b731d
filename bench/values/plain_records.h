// The values of type codes 259 and 260 as records with members and entry points like any other: the same elements in
// their encodings, but for the texts, which are UTF8Strings. What the type-code interface is measured against.
#pragma once

#include "asn1/record/record.h"

struct plain_update {
    int32_t version;
    int32_t int_a;
    char* name;
    int32_t int_b;
};
ZR_RECORD(plain_records, plain_update, asn_plain_update, zr::integer(ZR_M(version)), zr::integer(ZR_M(int_a)),
          zr::text(ZR_M(name)), zr::integer(ZR_M(int_b)));

struct plain_update_list {
    int32_t version;
    uint32_t count;
    plain_update* updates;
};
ZR_RECORD(plain_records, plain_update_list, asn_plain_update_list, zr::integer(ZR_M(version)),
          zr::list(ZR_M(count), ZR_M(updates)));

struct plain_request {
    int32_t version;
    char* str_a;
    char* str_b;
    uint32_t body_length;
    unsigned char* body;
};
ZR_RECORD(plain_records, plain_request, asn_plain_request, zr::integer(ZR_M(version)), zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)), zr::octets(ZR_M(body_length), ZR_M(body)));
