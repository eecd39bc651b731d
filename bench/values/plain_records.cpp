#include "bench/values/plain_records.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(plain_records, plain_update, plain_update_list, plain_request);
