#include "bench/peers/heimdal.h"

namespace bench {

static codec_peer<heimdal_codec<DecisionRequest, encode_DecisionRequest, decode_DecisionRequest, length_DecisionRequest,
                                free_DecisionRequest>>
    peer("decision", heimdal);

}  // namespace bench
