#include "base_idls/zrnbase_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(zrnbase_asn, uuid_t);
