#include "base_idls/yvsvr_enc_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(yvsvr_enc_asn,
                 aznadmsvc_s_t,
                 aznlocal_svr_s_t);
