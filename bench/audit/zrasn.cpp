#include "bench/audit/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static codec_peer<zrasn_codec<audit_workload>> peer(audit_workload::name, library);

}  // namespace bench
