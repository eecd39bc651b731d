#include "base_idls/azn_remote_authn_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(azn_remote_authn_asn,
                 azn_id_get_creds_in_s_t,
                 azn_id_get_creds_out_s_t,
                 azn_util_password_in_s_t,
                 azn_util_password_out_s_t);
