#include "bench/peers/asn1c.h"

#include <Uuid.h>

namespace bench {

static codec_peer<asn1c_codec<Uuid_t, asn_DEF_Uuid>> peer("uuid", asn1c);

}  // namespace bench
