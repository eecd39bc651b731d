#include "bench/peers/asn1c.h"

#include <ObjectList.h>

namespace bench {

static codec_peer<asn1c_codec<ObjectList_t, asn_DEF_ObjectList>> peer("objects", asn1c);

}  // namespace bench
