// Schema module azn_remote_authn_asn: credentials of an identity, and changing a password.
#pragma once

#include "base_idls/principal_asn.h"

// azn_id_get_creds_in_s_t asks for the credentials of an identity.
struct azn_id_get_creds_in_s_t {
    char* str_a;
    char* str_b;
    attrlist_s_t ext;
};
ZR_RECORD(azn_remote_authn_asn, azn_id_get_creds_in_s_t, asn_azn_id_get_creds_in_t,
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::nested(ZR_M(ext)));

// azn_id_get_creds_out_s_t is the reply to azn_id_get_creds_in_s_t.
struct azn_id_get_creds_out_s_t {
    yvprincipal_chain_s_t chain;
    int32_t int_a;
};
ZR_RECORD(azn_remote_authn_asn, azn_id_get_creds_out_s_t, asn_azn_id_get_creds_out_t,
          zr::nested(ZR_M(chain)),
          zr::integer(ZR_M(int_a)));

// azn_util_password_in_s_t asks for a change of a password.
struct azn_util_password_in_s_t {
    char* str_a;
    char* str_b;
};
ZR_RECORD(azn_remote_authn_asn, azn_util_password_in_s_t, asn_azn_util_password_in_t,
          zr::secret(zr::text(ZR_M(str_a))),
          zr::secret(zr::text(ZR_M(str_b))));

// azn_util_password_out_s_t is the reply to azn_util_password_in_s_t.
struct azn_util_password_out_s_t {
    char* str_a;
    attrlist_s_t ext;
    int32_t int_a;
};
ZR_RECORD(azn_remote_authn_asn, azn_util_password_out_s_t, asn_azn_util_password_out_t,
          zr::text(ZR_M(str_a)),
          zr::nested(ZR_M(ext)),
          zr::integer(ZR_M(int_a)));
