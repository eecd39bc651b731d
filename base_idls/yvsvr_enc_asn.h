// Schema module yvsvr_enc_asn: the local server and its administration services.
#pragma once

#include "base_idls/attrlist_asn.h"

// aznadmsvc_s_t is an administration service.
struct aznadmsvc_s_t {
    char* name;
    uint32_t count;
    char** names;
};
ZR_RECORD(yvsvr_enc_asn, aznadmsvc_s_t, asn_aznadmsvc_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(count), ZR_M(names)));

// aznlocal_svr_s_t describes the local server.
struct aznlocal_svr_s_t {
    char* str_a;
    char* str_b;
    char* str_c;
    char* str_d;
    int32_t int_a;
    int32_t int_b;
    int32_t int_c;
    int32_t int_d;
    uint32_t count;
    aznadmsvc_s_t* svcs;
    attrlist_s_t ext;
};
ZR_RECORD(yvsvr_enc_asn, aznlocal_svr_s_t, asn_aznlocal_svr_t,
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::text(ZR_M(str_c)),
          zr::text(ZR_M(str_d)),
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)),
          zr::integer(ZR_M(int_d)),
          zr::list(ZR_M(count), ZR_M(svcs)),
          zr::nested(ZR_M(ext)));
