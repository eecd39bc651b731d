#include "base_idls/yvobj_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(yvobj_asn,
                 yvobj_list_s_t,
                 yvobj_name_list_s_t,
                 yvobj_db_header_s_t);
