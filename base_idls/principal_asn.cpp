#include "base_idls/principal_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(principal_asn,
                 sec_id_t,
                 sec_id_pa_t,
                 yvprincipal_s_t,
                 yvprincipal_chain_s_t);
