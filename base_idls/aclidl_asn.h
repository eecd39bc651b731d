// Schema module aclidl_asn: access-control lists and their attachment to protected objects.
#pragma once

#include "base_idls/principal_asn.h"

// map_pobj_to_acl_s_t maps a protected object to access-control lists.
struct map_pobj_to_acl_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(aclidl_asn, map_pobj_to_acl_s_t, asn_map_pobj_to_acl_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));

// map_acl_to_pobj_s_t maps an access-control list to protected objects.
struct map_acl_to_pobj_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(aclidl_asn, map_acl_to_pobj_s_t, asn_map_acl_to_pobj_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));

// acl_permset_s_t is a set of permissions.
struct acl_permset_s_t {
    uint32_t count;
    int32_t* perms;
};
ZR_RECORD(aclidl_asn, acl_permset_s_t, asn_acl_permset_t,
          zr::list(ZR_M(count), ZR_M(perms)));

// acl_entry_s_t grants permissions to an identity.
struct acl_entry_s_t {
    acl_permset_s_t permset;
    int32_t int_a;
    sec_id_t id;
};
ZR_RECORD(aclidl_asn, acl_entry_s_t, asn_acl_entry_t,
          zr::nested(ZR_M(permset)),
          zr::integer(ZR_M(int_a)),
          zr::nested(ZR_M(id)));

// acl_ext_s_t is an access-control list.
struct acl_ext_s_t {
    char* name;
    uint32_t count;
    acl_entry_s_t* entries;
    attrlist_s_t ext;
};
ZR_RECORD(aclidl_asn, acl_ext_s_t, asn_acl_ext_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(count), ZR_M(entries)),
          zr::nested(ZR_M(ext)));
