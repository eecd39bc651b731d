#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<Acl, encode_Acl, decode_Acl, length_Acl, free_Acl>> peer("acl", heimdal);

}  // namespace bench
