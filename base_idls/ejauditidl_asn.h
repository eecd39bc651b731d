// Schema module ejauditidl_asn: audit events.
#pragma once

#include "asn1/record/record.h"

// ejauditattribute_s_t is a named attribute of an audit element.
struct ejauditattribute_s_t {
    char* name;
    uint32_t length;
    unsigned char* data;
};
ZR_RECORD(ejauditidl_asn, ejauditattribute_s_t, asn_ejauditattribute_t,
          zr::text(ZR_M(name)),
          zr::octets(ZR_M(length), ZR_M(data)));

// ejauditelement_s_t is a named element of an audit event; it contains itself.
struct ejauditelement_s_t {
    char* name;
    uint32_t length;
    unsigned char* data;
    uint32_t attr_count;
    ejauditattribute_s_t* attrs;
    uint32_t element_count;
    ejauditelement_s_t* elements;
};
ZR_RECORD(ejauditidl_asn, ejauditelement_s_t, asn_ejauditelement_t,
          zr::text(ZR_M(name)),
          zr::octets(ZR_M(length), ZR_M(data)),
          zr::list(ZR_M(attr_count), ZR_M(attrs)),
          zr::list(ZR_M(element_count), ZR_M(elements)));

// ejauditevent_s_t is an audit event with its tree of elements.
struct ejauditevent_s_t {
    int32_t int_a;
    char* name;
    int32_t int_b;
    uint32_t element_count;
    ejauditelement_s_t* elements;
};
ZR_RECORD(ejauditidl_asn, ejauditevent_s_t, asn_ejauditevent_t,
          zr::integer(ZR_M(int_a)),
          zr::text(ZR_M(name)),
          zr::integer(ZR_M(int_b)),
          zr::list(ZR_M(element_count), ZR_M(elements)));
