#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::AttrList>> peer("attrlist", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::AttrList>> arena_peer("attrlist", protobuf_arena);

}  // namespace bench
