#include "base_idls/yvpopobjs_asn.h"

ZR_DEFINE_RECORD(yvmap_pobj_to_pop_s_t);
ZR_DEFINE_RECORD(yvtod_range_s_t);
ZR_DEFINE_RECORD(yvaccess_times_s_t);
ZR_DEFINE_RECORD(yvpop_ipauth_s_t);
ZR_DEFINE_RECORD(yvpop_s_t);
ZR_DEFINE_RECORD(yvmap_pop_to_pobj_s_t);

ZR_DEFINE_MODULE(yvpopobjs_asn, yvmap_pobj_to_pop_s_t, yvtod_range_s_t, yvaccess_times_s_t, yvpop_ipauth_s_t, yvpop_s_t, yvmap_pop_to_pobj_s_t);
