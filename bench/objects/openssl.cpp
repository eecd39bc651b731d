#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<ObjectList, ObjectList_it>> peer("objects", openssl);

}  // namespace bench
