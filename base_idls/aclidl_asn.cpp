#include "base_idls/aclidl_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(aclidl_asn,
                 map_pobj_to_acl_s_t,
                 map_acl_to_pobj_s_t,
                 acl_permset_s_t,
                 acl_entry_s_t,
                 acl_ext_s_t);
