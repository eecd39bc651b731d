#include "bench/harness/zrasn_codec.h"
#include "bench/uuid/workload.h"

namespace bench {

static codec_peer<zrasn_codec<uuid_workload>> peer(uuid_workload::name, library);

}  // namespace bench
