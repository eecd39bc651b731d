#include "bench/peers/asn1c.h"

#include <AttrList.h>

namespace bench {

static codec_peer<asn1c_codec<AttrList_t, asn_DEF_AttrList>> peer("attrlist", asn1c);

}  // namespace bench
