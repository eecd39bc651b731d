#include "bench/harness/zrasn_codec.h"
#include "bench/objects/workload.h"

namespace bench {

static zrasn_peers<objects_workload> peers;

}  // namespace bench
