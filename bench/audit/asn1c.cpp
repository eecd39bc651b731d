#include "bench/peers/asn1c.h"

#include <AuditEvent.h>

namespace bench {

static codec_peer<asn1c_codec<AuditEvent_t, asn_DEF_AuditEvent>> peer("audit", asn1c);

}  // namespace bench
