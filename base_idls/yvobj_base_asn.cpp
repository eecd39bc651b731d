#include "base_idls/yvobj_base_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(yvobj_base_asn, yvobj_t);
