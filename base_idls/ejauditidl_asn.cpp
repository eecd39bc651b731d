#include "base_idls/ejauditidl_asn.h"

ZR_DEFINE_RECORD(ejauditattribute_s_t);
ZR_DEFINE_RECORD(ejauditelement_s_t);
ZR_DEFINE_RECORD(ejauditevent_s_t);

ZR_DEFINE_MODULE(ejauditidl_asn, ejauditattribute_s_t, ejauditelement_s_t, ejauditevent_s_t);
