#include "bench/peers/snacc.h"

namespace bench {

static codec_peer<snacc_codec<Acl, BEncAcl, BDecAcl>> peer("acl", snacc);

}  // namespace bench
