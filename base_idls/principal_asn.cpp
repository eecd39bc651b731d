#include "base_idls/principal_asn.h"

ZR_DEFINE_RECORD(sec_id_t);
ZR_DEFINE_RECORD(sec_id_pa_t);
ZR_DEFINE_RECORD(yvprincipal_s_t);
ZR_DEFINE_RECORD(yvprincipal_chain_s_t);

ZR_DEFINE_MODULE(principal_asn, sec_id_t, sec_id_pa_t, yvprincipal_s_t, yvprincipal_chain_s_t);
