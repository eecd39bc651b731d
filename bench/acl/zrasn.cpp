#include "bench/acl/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static zrasn_peers<acl_workload> peers;

}  // namespace bench
