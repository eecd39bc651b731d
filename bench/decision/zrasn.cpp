#include "bench/decision/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static zrasn_peers<decision_workload> peers;

}  // namespace bench
