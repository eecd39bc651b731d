#include "base_idls/azn_remote_entitlements_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(azn_remote_entitlements_asn,
                 azn_get_entitlements_in_s_t,
                 azn_get_entitlements_out_s_t);
