// The list of objects does not fit the stack.
#include "bench/objects/handwritten.h"

#include "bench/handwritten/peer.h"
#include "bench/objects/workload.h"

namespace bench {

static const handwritten_peers<objects_workload, encode_twice<yvobj_list_s_t>> peers;

}  // namespace bench
