// Schema module azn_remote_authz_asn: the remote extended decision.
#pragma once

#include "base_idls/principal_asn.h"

// azn_decision_ext_in_s_t asks for a decision; it carries two attribute lists.
struct azn_decision_ext_in_s_t {
    yvprincipal_chain_s_t chain;
    char* str_a;
    char* str_b;
    attrlist_s_t ext;
    attrlist_s_t ext2;
};
ZR_RECORD(azn_remote_authz_asn, azn_decision_ext_in_s_t, asn_azn_decision_ext_in_t,
          zr::nested(ZR_M(chain)),
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::nested(ZR_M(ext)),
          zr::nested(ZR_M(ext2)));

// azn_decision_ext_out_s_t is the reply to azn_decision_ext_in_s_t.
struct azn_decision_ext_out_s_t {
    int32_t int_a;
    attrlist_s_t ext;
    int32_t int_b;
};
ZR_RECORD(azn_remote_authz_asn, azn_decision_ext_out_s_t, asn_azn_decision_ext_out_t,
          zr::integer(ZR_M(int_a)),
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_b)));
