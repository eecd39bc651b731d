// Schema module actionidl_asn: actions and groups of actions.
#pragma once

#include "base_idls/attrlist_asn.h"

// yvaction_s_t is an action.
struct yvaction_s_t {
    int32_t int_a;
    char* str_a;
    char* str_b;
    char* str_c;
    int32_t int_b;
    int32_t int_c;
    attrlist_s_t ext;
};
ZR_RECORD(actionidl_asn, yvaction_s_t, asn_yvaction_t,
          zr::integer(ZR_M(int_a)),
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::text(ZR_M(str_c)),
          zr::integer(ZR_M(int_b)),
          zr::integer(ZR_M(int_c)),
          zr::nested(ZR_M(ext)));

// yvaction_group_s_t is a group of up to 32 actions, each in its slot.
struct yvaction_group_s_t {
    char* name;
    yvaction_s_t* actions[32];  // null for an empty slot
    attrlist_s_t ext;
};
ZR_RECORD(actionidl_asn, yvaction_group_s_t, asn_yvaction_group_t,
          zr::text(ZR_M(name)),
          zr::slots(ZR_M(actions)),
          zr::nested(ZR_M(ext)));

// yvaction_groups_s_t holds up to 32 groups, each in its slot.
struct yvaction_groups_s_t {
    yvaction_group_s_t* groups[32];  // null for an empty slot
    attrlist_s_t ext;
};
ZR_RECORD(actionidl_asn, yvaction_groups_s_t, asn_yvaction_groups_t,
          zr::slots(ZR_M(groups)),
          zr::nested(ZR_M(ext)));
