#include "base_idls/yvobj_asn.h"

ZR_DEFINE_RECORD(yvobj_list_s_t);
ZR_DEFINE_RECORD(yvobj_name_list_s_t);
ZR_DEFINE_RECORD(yvobj_db_header_s_t);

ZR_DEFINE_MODULE(yvobj_asn, yvobj_list_s_t, yvobj_name_list_s_t, yvobj_db_header_s_t);
