#include "base_idls/yvobj_base_asn.h"

ZR_DEFINE_RECORD(yvobj_t);

ZR_DEFINE_MODULE(yvobj_base_asn, yvobj_t);
