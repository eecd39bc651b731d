#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<ObjectList, BEncObjectList, BDecObjectList>> peer("objects", snacc);

}  // namespace bench
