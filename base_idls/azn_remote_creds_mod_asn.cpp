#include "base_idls/azn_remote_creds_mod_asn.h"

ZR_DEFINE_RECORD(azn_creds_mod_in_s_t);
ZR_DEFINE_RECORD(azn_creds_mod_out_s_t);

ZR_DEFINE_MODULE(azn_remote_creds_mod_asn, azn_creds_mod_in_s_t, azn_creds_mod_out_s_t);
