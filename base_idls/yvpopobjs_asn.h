// Schema module yvpopobjs_asn: protected-object policies and their attachment to objects.
#pragma once

#include "base_idls/attrlist_asn.h"

// yvmap_pobj_to_pop_s_t maps a protected object to policies.
struct yvmap_pobj_to_pop_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(yvpopobjs_asn, yvmap_pobj_to_pop_s_t, asn_yvmap_pobj_to_pop_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));

// yvtod_range_s_t is a range of times of day.
struct yvtod_range_s_t {
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
};
ZR_RECORD(yvpopobjs_asn, yvtod_range_s_t, asn_yvtod_range_t,
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)));

// yvaccess_times_s_t says when access is permitted.
struct yvaccess_times_s_t {
    int32_t int_a;
    yvtod_range_s_t range;
};
ZR_RECORD(yvpopobjs_asn, yvaccess_times_s_t, asn_yvaccess_times_t,
          zr::integer(ZR_M(int_a)),
          zr::nested(ZR_M(range)));

// yvpop_ipauth_s_t is a network-authentication rule.
struct yvpop_ipauth_s_t {
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
};
ZR_RECORD(yvpopobjs_asn, yvpop_ipauth_s_t, asn_yvpop_ipauth_t,
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)));

// yvpop_s_t is a protected-object policy.
struct yvpop_s_t {
    char* name;
    yvaccess_times_s_t times;
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
    uint32_t count;
    yvpop_ipauth_s_t* ipauth;
    attrlist_s_t ext;
};
ZR_RECORD(yvpopobjs_asn, yvpop_s_t, asn_yvpop_t,
          zr::text(ZR_M(name)),
          zr::nested(ZR_M(times)),
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)),
          zr::list(ZR_M(count), ZR_M(ipauth)),
          zr::nested(ZR_M(ext)));

// yvmap_pop_to_pobj_s_t maps a policy to protected objects.
struct yvmap_pop_to_pobj_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(yvpopobjs_asn, yvmap_pop_to_pobj_s_t, asn_yvmap_pop_to_pobj_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));
