#include "bench/harness/zrasn_codec.h"
#include "bench/objects/workload.h"

namespace bench {

static codec_peer<zrasn_codec<objects_workload>> peer(objects_workload::name, library);

}  // namespace bench
