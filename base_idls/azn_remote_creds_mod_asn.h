// Schema module azn_remote_creds_mod_asn: modifying credentials.
#pragma once

#include "base_idls/principal_asn.h"

// azn_creds_mod_in_s_t asks for a change of credentials.
struct azn_creds_mod_in_s_t {
    char* str_a;
    attrlist_s_t ext;
    yvprincipal_chain_s_t chain;
};
ZR_RECORD(azn_remote_creds_mod_asn, azn_creds_mod_in_s_t, asn_azn_creds_mod_in_t,
          zr::text(ZR_M(str_a)),
          zr::nested(ZR_M(ext)),
          zr::nested(ZR_M(chain)));

// azn_creds_mod_out_s_t is the reply to azn_creds_mod_in_s_t.
struct azn_creds_mod_out_s_t {
    yvprincipal_chain_s_t chain;
    int32_t int_a;
};
ZR_RECORD(azn_remote_creds_mod_asn, azn_creds_mod_out_s_t, asn_azn_creds_mod_out_t,
          zr::nested(ZR_M(chain)),
          zr::integer(ZR_M(int_a)));
