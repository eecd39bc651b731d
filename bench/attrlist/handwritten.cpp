#include "bench/attrlist/workload.h"
#include "bench/handwritten/peer.h"
#include "bench/handwritten/records.h"

namespace bench {

static const handwritten_peers<attrlist_workload, encode_once<scratch_octets, attrlist_s_t>> peers;

}  // namespace bench
