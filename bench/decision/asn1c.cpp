#include "bench/peers/asn1c.h"

#include <DecisionRequest.h>

namespace bench {

static codec_peer<asn1c_codec<DecisionRequest_t, asn_DEF_DecisionRequest>> peer("decision", asn1c);

}  // namespace bench
