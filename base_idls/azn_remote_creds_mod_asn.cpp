#include "base_idls/azn_remote_creds_mod_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(azn_remote_creds_mod_asn,
                 azn_creds_mod_in_s_t,
                 azn_creds_mod_out_s_t);
