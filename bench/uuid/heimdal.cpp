#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<Uuid, encode_Uuid, decode_Uuid, length_Uuid, free_Uuid>> peer("uuid", heimdal);

}  // namespace bench
