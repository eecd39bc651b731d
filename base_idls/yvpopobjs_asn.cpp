#include "base_idls/yvpopobjs_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(yvpopobjs_asn,
                 yvmap_pobj_to_pop_s_t,
                 yvtod_range_s_t,
                 yvaccess_times_s_t,
                 yvpop_ipauth_s_t,
                 yvpop_s_t,
                 yvmap_pop_to_pobj_s_t);
