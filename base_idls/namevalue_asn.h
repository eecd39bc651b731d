// Schema module namevalue_asn: the name/value tree.
#pragma once

#include "asn1/record/record.h"

// namevalue_s_t is a node of a name/value tree; it contains itself.
struct namevalue_s_t {
    char* name;
    uint32_t value_count;
    char** values;
    uint32_t child_count;
    namevalue_s_t** children;
};
ZR_RECORD(namevalue_asn, namevalue_s_t, asn_namevalue_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(value_count), ZR_M(values)),
          zr::list(ZR_M(child_count), ZR_M(children)));

// namevalueList_s_t is a list of name/value trees.
struct namevalueList_s_t {
    uint32_t count;
    namevalue_s_t** items;
};
ZR_RECORD(namevalue_asn, namevalueList_s_t, asn_namevalueList_t,
          zr::list(ZR_M(count), ZR_M(items)));
