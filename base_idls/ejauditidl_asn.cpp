#include "base_idls/ejauditidl_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(ejauditidl_asn,
                 ejauditattribute_s_t,
                 ejauditelement_s_t,
                 ejauditevent_s_t);
