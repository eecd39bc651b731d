#include "base_idls/yvaclobjs_asn.h"

ZR_DEFINE_RECORD(yvattr_s_t);
ZR_DEFINE_RECORD(yvextattr_s_t);
ZR_DEFINE_RECORD(yvextern_auth_s_t);
ZR_DEFINE_RECORD(yvauthzn_db_s_t);

ZR_DEFINE_MODULE(yvaclobjs_asn, yvattr_s_t, yvextattr_s_t, yvextern_auth_s_t, yvauthzn_db_s_t);
