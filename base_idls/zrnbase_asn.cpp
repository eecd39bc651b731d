#include "base_idls/zrnbase_asn.h"

ZR_DEFINE_RECORD(uuid_t, asn_uuid_t);
