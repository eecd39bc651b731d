#include "base_idls/zrnbase_asn.h"

ZR_DEFINE_RECORD(uuid_t);

ZR_DEFINE_MODULE(zrnbase_asn, uuid_t);
