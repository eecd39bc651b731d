#include "bench/peers/asn1c.h"

#include <Acl.h>

namespace bench {

static codec_peer<asn1c_codec<Acl_t, asn_DEF_Acl>> peer("acl", asn1c);

}  // namespace bench
