#include "base_idls/actionidl_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(actionidl_asn,
                 yvaction_s_t,
                 yvaction_group_s_t,
                 yvaction_groups_s_t);
