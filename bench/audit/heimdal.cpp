#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<AuditEvent, encode_AuditEvent, decode_AuditEvent, length_AuditEvent, free_AuditEvent>>
    peer("audit", heimdal);

}  // namespace bench
