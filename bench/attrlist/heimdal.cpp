#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<AttrList, encode_AttrList, decode_AttrList, length_AttrList, free_AttrList>> peer(
    "attrlist", heimdal);

}  // namespace bench
