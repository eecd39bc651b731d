#include "base_idls/RemoteLog_asn.h"

ZR_DEFINE_RECORD(remote_log_request);

ZR_DEFINE_MODULE(RemoteLog_asn, remote_log_request);
