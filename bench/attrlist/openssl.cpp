#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<AttrList, AttrList_it>> peer("attrlist", openssl);

}  // namespace bench
