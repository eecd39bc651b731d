#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<AuditEvent, BEncAuditEvent, BDecAuditEvent>> peer("audit", snacc);

}  // namespace bench
