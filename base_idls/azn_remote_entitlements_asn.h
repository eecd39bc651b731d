// Schema module azn_remote_entitlements_asn: getting entitlements.
#pragma once

#include "base_idls/principal_asn.h"

// azn_get_entitlements_in_s_t asks for entitlements.
struct azn_get_entitlements_in_s_t {
    char* str_a;
    attrlist_s_t ext;
    yvprincipal_chain_s_t chain;
};
ZR_RECORD(azn_remote_entitlements_asn, azn_get_entitlements_in_s_t, asn_azn_get_entitlements_in_t,
          zr::text(ZR_M(str_a)),
          zr::nested(ZR_M(ext)),
          zr::nested(ZR_M(chain)));

// azn_get_entitlements_out_s_t is the reply to azn_get_entitlements_in_s_t.
struct azn_get_entitlements_out_s_t {
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(azn_remote_entitlements_asn, azn_get_entitlements_out_s_t, asn_azn_get_entitlements_out_t,
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));
