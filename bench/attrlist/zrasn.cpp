#include "bench/attrlist/workload.h"
#include "bench/harness/zrasn_codec.h"

namespace bench {

static codec_peer<zrasn_codec<attrlist_workload>> peer(attrlist_workload::name, library);

}  // namespace bench
