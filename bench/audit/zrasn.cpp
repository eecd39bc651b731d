#include "bench/audit/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static zrasn_peers<audit_workload> peers;

}  // namespace bench
