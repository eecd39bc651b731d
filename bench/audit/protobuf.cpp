#include "bench/peers/protobuf.h"

namespace bench {

static codec_peer<protobuf_codec<records_pb::AuditEvent>> peer("audit", protobuf);
static codec_peer<protobuf_arena_codec<records_pb::AuditEvent>> arena_peer("audit", protobuf_arena);

}  // namespace bench
