// The UUID by hand: bounded by a constant, so written on the stack.
#include "bench/handwritten/peer.h"
#include "bench/handwritten/records.h"
#include "bench/uuid/workload.h"

namespace bench {

static const handwritten_peers<uuid_workload, encode_once<sizeof envelope + uuid_room, uuid_t>> peers;

}  // namespace bench
