#include "base_idls/pobj_asn.h"

ZR_DEFINE_RECORD(pobj_s_t);
ZR_DEFINE_RECORD(pobjspace_s_t);
ZR_DEFINE_RECORD(azn_internal_pobj_s_t);

ZR_DEFINE_MODULE(pobj_asn, pobj_s_t, pobjspace_s_t, azn_internal_pobj_s_t);
