#include "bench/harness/zrasn_codec.h"
#include "bench/uuid/workload.h"

namespace bench {

static zrasn_peers<uuid_workload> peers;

}  // namespace bench
