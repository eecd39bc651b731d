// Schema module RemoteLog_asn: the request to a remote log service.
#pragma once

#include "asn1/record/record.h"

// remote_log_request is one entry for a remote log.
struct remote_log_request {
    char* str_a;
    char* str_b;
    int32_t int_a;
    int32_t int_b;
    uint32_t length;
    unsigned char* data;
};
ZR_RECORD(RemoteLog_asn, remote_log_request, asn_RemoteLogRequest,
          zr::text(ZR_M(str_a)),
          zr::text(ZR_M(str_b)),
          zr::integer(ZR_M(int_a)),
          zr::integer(ZR_M(int_b)),
          zr::octets(ZR_M(length), ZR_M(data)));
