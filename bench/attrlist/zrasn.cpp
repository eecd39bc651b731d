#include "bench/attrlist/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static zrasn_peers<attrlist_workload> peers;

}  // namespace bench
