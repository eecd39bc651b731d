#include "base_idls/azn_remote_authz_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(azn_remote_authz_asn,
                 azn_decision_ext_in_s_t,
                 azn_decision_ext_out_s_t);
