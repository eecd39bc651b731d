// Schema module yvobj_base_asn: the stored object.
#pragma once

#include "asn1/record/record.h"

// yvobj_t is a stored object: a name, two integers that are opaque here, and its body.
struct yvobj_t {
    char* name;
    int32_t int_a;
    int32_t int_b;
    uint32_t body_length;
    unsigned char* body;
};
ZR_RECORD(yvobj_base_asn, yvobj_t, asn_yvobj_t,
          zr::text(ZR_M(name)),
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::octets(ZR_M(body_length), ZR_M(body)));
