#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<AuditEvent, AuditEvent_it>> peer("audit", openssl);

}  // namespace bench
