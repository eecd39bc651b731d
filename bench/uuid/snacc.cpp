#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<Uuid, BEncUuid, BDecUuid>> peer("uuid", snacc);

}  // namespace bench
