#include "base_idls/yvaclobjs_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(yvaclobjs_asn,
                 yvattr_s_t,
                 yvextattr_s_t,
                 yvextern_auth_s_t,
                 yvauthzn_db_s_t);
