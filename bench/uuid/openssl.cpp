#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<Uuid, Uuid_it>> peer("uuid", openssl);

}  // namespace bench
