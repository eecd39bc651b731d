#include "bench/peers/openssl.h"

namespace bench {

static codec_peer<openssl_codec<DecisionRequest, DecisionRequest_it>> peer("decision", openssl);

}  // namespace bench
