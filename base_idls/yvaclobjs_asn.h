// Schema module yvaclobjs_asn: extended attributes, external authorization and the authorization database.
#pragma once

#include "base_idls/attrlist_asn.h"

// yvattr_s_t is an attribute with text values.
struct yvattr_s_t {
    char* name;
    uint32_t count;
    char** values;
};
ZR_RECORD(yvaclobjs_asn, yvattr_s_t, asn_yvattr_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(count), ZR_M(values)));

// yvextattr_s_t is a set of extended attributes.
struct yvextattr_s_t {
    uint32_t count;
    yvattr_s_t* attrs;
    attrlist_s_t ext;
};
ZR_RECORD(yvaclobjs_asn, yvextattr_s_t, asn_yvextattr_t,
          zr::list(ZR_M(count), ZR_M(attrs)),
          zr::nested(ZR_M(ext)));

// yvextern_auth_s_t holds the settings of an external authorization service.
struct yvextern_auth_s_t {
    char* str_a;
    char* str_b;
    char* str_c;
    char* str_d;
};
ZR_RECORD(yvaclobjs_asn, yvextern_auth_s_t, asn_yvextern_auth_t,
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::text(ZR_M(str_c)),
          zr::text(ZR_M(str_d)));

// yvauthzn_db_s_t describes the authorization database.
struct yvauthzn_db_s_t {
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
    attrlist_s_t ext;
};
ZR_RECORD(yvaclobjs_asn, yvauthzn_db_s_t, asn_yvauthzn_db_t,
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)),
          zr::nested(ZR_M(ext)));
