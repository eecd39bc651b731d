#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<ObjectList, encode_ObjectList, decode_ObjectList, length_ObjectList, free_ObjectList>>
    peer("objects", heimdal);

}  // namespace bench
