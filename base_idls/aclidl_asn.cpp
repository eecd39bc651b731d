#include "base_idls/aclidl_asn.h"

ZR_DEFINE_RECORD(map_pobj_to_acl_s_t);
ZR_DEFINE_RECORD(map_acl_to_pobj_s_t);
ZR_DEFINE_RECORD(acl_permset_s_t);
ZR_DEFINE_RECORD(acl_entry_s_t);
ZR_DEFINE_RECORD(acl_ext_s_t);

ZR_DEFINE_MODULE(aclidl_asn, map_pobj_to_acl_s_t, map_acl_to_pobj_s_t, acl_permset_s_t, acl_entry_s_t, acl_ext_s_t);
