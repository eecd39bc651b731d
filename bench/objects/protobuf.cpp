#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::ObjectList>> peer("objects", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::ObjectList>> arena_peer("objects", protobuf_arena);

}  // namespace bench
