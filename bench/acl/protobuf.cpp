#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::Acl>> peer("acl", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::Acl>> arena_peer("acl", protobuf_arena);

}  // namespace bench
