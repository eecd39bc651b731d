#include "base_idls/namevalue_asn.h"

ZR_DEFINE_RECORD(namevalue_s_t);
ZR_DEFINE_RECORD(namevalueList_s_t);

ZR_DEFINE_MODULE(namevalue_asn, namevalue_s_t, namevalueList_s_t);
