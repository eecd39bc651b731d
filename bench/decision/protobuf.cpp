#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::DecisionRequest>> peer("decision", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::DecisionRequest>> arena_peer("decision", protobuf_arena);

}  // namespace bench
