// Schema module attrlist_asn: values, attributes and the attribute lists that extend most records.
#pragma once

#include "asn1/record/record.h"

// value_s_t is one attribute value, carried in up to three forms at once.
struct value_s_t {
    int32_t type;
    char* str;
    uint32_t length;
    unsigned char* data;
};
ZR_RECORD(attrlist_asn, value_s_t, asn_value_t,
          zr::integer(ZR_M(type)),
          zr::text(ZR_M(str)),
          zr::octets(ZR_M(length), ZR_M(data)));

// attr_s_t is a named attribute with any number of values.
struct attr_s_t {
    char* name;
    uint32_t value_count;
    value_s_t* values;
};
ZR_RECORD(attrlist_asn, attr_s_t, asn_attr_t,
          zr::text(ZR_M(name)),
          zr::list(ZR_M(value_count), ZR_M(values)));

// attrlist_s_t is the extension list that other records carry.
struct attrlist_s_t {
    uint32_t attr_count;
    attr_s_t* attrs;
};
ZR_RECORD(attrlist_asn, attrlist_s_t, asn_attrlist_t,
          zr::list(ZR_M(attr_count), ZR_M(attrs)));
