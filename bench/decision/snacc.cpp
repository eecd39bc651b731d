#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<DecisionRequest, BEncDecisionRequest, BDecDecisionRequest>> peer("decision", snacc);

}  // namespace bench
