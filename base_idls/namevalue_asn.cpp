#include "base_idls/namevalue_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(namevalue_asn,
                 namevalue_s_t,
                 namevalueList_s_t);
