#include "bench/decision/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static codec_peer<zrasn_codec<decision_workload>> peer(decision_workload::name, library);

}  // namespace bench
