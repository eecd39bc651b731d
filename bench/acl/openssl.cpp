#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<Acl, Acl_it>> peer("acl", openssl);

}  // namespace bench
