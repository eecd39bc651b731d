#include "base_idls/attrlist_asn.h"

ZR_DEFINE_RECORD(value_s_t);
ZR_DEFINE_RECORD(attr_s_t);
ZR_DEFINE_RECORD(attrlist_s_t);

ZR_DEFINE_MODULE(attrlist_asn, value_s_t, attr_s_t, attrlist_s_t);
