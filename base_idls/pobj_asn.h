// Schema module pobj_asn: protected objects and their name space.
#pragma once

#include "base_idls/attrlist_asn.h"

// pobj_s_t is a protected object.
struct pobj_s_t {
    int32_t int_a;
    int32_t int_b;
    char* name;
    attrlist_s_t ext;
};
ZR_RECORD(pobj_asn, pobj_s_t, asn_pobj_t,
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::text(ZR_M(name)),
          zr::nested(ZR_M(ext)));

// pobjspace_s_t is a name space of protected objects.
struct pobjspace_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(pobj_asn, pobjspace_s_t, asn_pobjspace_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));

// azn_internal_pobj_s_t is a protected object with a text.
struct azn_internal_pobj_s_t {
    pobj_s_t pobj;
    char* text;
};
ZR_RECORD(pobj_asn, azn_internal_pobj_s_t, asn_azn_internal_pobj_t,
          zr::nested(ZR_M(pobj)),
          zr::text(ZR_M(text)));
