#include "base_idls/yvsvr_enc_asn.h"

ZR_DEFINE_RECORD(aznadmsvc_s_t);
ZR_DEFINE_RECORD(aznlocal_svr_s_t);

ZR_DEFINE_MODULE(yvsvr_enc_asn, aznadmsvc_s_t, aznlocal_svr_s_t);
