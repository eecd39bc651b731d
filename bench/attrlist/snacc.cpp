#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<AttrList, BEncAttrList, BDecAttrList>> peer("attrlist", snacc);

}  // namespace bench
