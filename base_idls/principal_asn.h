// Schema module principal_asn: who is asking: identities, principals and chains of principals.
#pragma once

#include "base_idls/attrlist_asn.h"
#include "base_idls/zrnbase_asn.h"

// sec_id_t is a security identity.
struct sec_id_t {
    uuid_t uuid;
    char* name;
};
ZR_RECORD(principal_asn, sec_id_t, asn_sec_id_t,
          zr::nested(ZR_M(uuid)),
          zr::text(ZR_M(name)));

// sec_id_pa_t is an identity with its privilege attributes: at most 65,535 further identities.
struct sec_id_pa_t {
    sec_id_t id;
    uint16_t count;
    sec_id_t* ids;
};
ZR_RECORD(principal_asn, sec_id_pa_t, asn_sec_id_pa_t,
          zr::nested(ZR_M(id)),
          zr::list(ZR_M(count), ZR_M(ids)));

// yvprincipal_s_t is a principal.
struct yvprincipal_s_t {
    int32_t int_a;
    sec_id_pa_t* pa;  // null when absent
    int32_t int_b;
    attrlist_s_t* ext;  // null when absent
};
ZR_RECORD(principal_asn, yvprincipal_s_t, asn_yvprincipal_t,
          zr::integer(ZR_M(int_a)),
          zr::optional_nested(ZR_M(pa)),
          zr::integer(ZR_M(int_b)),
          zr::optional_nested(ZR_M(ext)));

// yvprincipal_chain_s_t is the chain of calling principals that request records carry.
struct yvprincipal_chain_s_t {
    char* name;
    uint32_t count;
    yvprincipal_s_t** principals;
};
ZR_RECORD(principal_asn, yvprincipal_chain_s_t, asn_yvprincipal_chain_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(count), ZR_M(principals)));
