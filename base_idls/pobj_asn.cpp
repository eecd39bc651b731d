#include "base_idls/pobj_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(pobj_asn,
                 pobj_s_t,
                 pobjspace_s_t,
                 azn_internal_pobj_s_t);
