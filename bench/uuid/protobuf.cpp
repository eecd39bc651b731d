#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::Uuid>> peer("uuid", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::Uuid>> arena_peer("uuid", protobuf_arena);

}  // namespace bench
