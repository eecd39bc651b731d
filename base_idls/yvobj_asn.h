// Schema module yvobj_asn: lists of objects and of object names, and the header of an object database.
#pragma once

#include "base_idls/attrlist_asn.h"
#include "base_idls/yvobj_base_asn.h"

// yvobj_list_s_t is a list of objects.
struct yvobj_list_s_t {
    uint32_t count;
    yvobj_t* objs;
    attrlist_s_t ext;
};
ZR_RECORD(yvobj_asn, yvobj_list_s_t, asn_yvobj_list_t,
          zr::list(ZR_M(count), ZR_M(objs)),
          zr::nested(ZR_M(ext)));

// yvobj_name_list_s_t is a list of object names.
struct yvobj_name_list_s_t {
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(yvobj_asn, yvobj_name_list_s_t, asn_yvobj_name_list_t,
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));

// yvobj_db_header_s_t heads an object database.
struct yvobj_db_header_s_t {
    int32_t int_a;
    uint32_t count;
    char** names;
    attrlist_s_t ext;
};
ZR_RECORD(yvobj_asn, yvobj_db_header_s_t, asn_yvobj_db_header_t,
          zr::integer(ZR_M(int_a)),
          zr::list(ZR_M(count), ZR_M(names)),
          zr::nested(ZR_M(ext)));
