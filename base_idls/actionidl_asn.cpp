#include "base_idls/actionidl_asn.h"

ZR_DEFINE_RECORD(yvaction_s_t);
ZR_DEFINE_RECORD(yvaction_group_s_t);
ZR_DEFINE_RECORD(yvaction_groups_s_t);

ZR_DEFINE_MODULE(actionidl_asn, yvaction_s_t, yvaction_group_s_t, yvaction_groups_s_t);
