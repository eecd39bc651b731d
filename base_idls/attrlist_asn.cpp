#include "base_idls/attrlist_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(attrlist_asn,
                 value_s_t,
                 attr_s_t,
                 attrlist_s_t);
