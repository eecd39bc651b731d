#include "bench/acl/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static codec_peer<zrasn_codec<acl_workload>> peer(acl_workload::name, library);

}  // namespace bench
