#include "base_idls/RemoteLog_asn.h"

#include "asn1/codec/define_record.h"

ZR_DEFINE_MODULE(RemoteLog_asn, remote_log_request);
