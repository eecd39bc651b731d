// The UUID by hand. It is bounded by a constant, so it is written once, from the front, into the block that is handed
// out: a copy would have to wait for the small pieces it was written in.
#include "bench/handwritten/peer.h"
#include "bench/handwritten/records.h"
#include "bench/uuid/workload.h"

namespace bench {

// The octets behind an INTEGER's own are overwritten by what is written next.
BENCH_INLINE unsigned char* put_forward(unsigned char* at, int32_t value) {
    const size_t length = integer_length(value);
    const auto both = static_cast<uint16_t>(tag_integer | length << 8);
    const uint32_t contents = __builtin_bswap32(static_cast<uint32_t>(value) << (32 - 8 * length));
    std::memcpy(at, &both, sizeof both);
    std::memcpy(at + sizeof both, &contents, sizeof contents);
    return at + sizeof both + length;
}

static bool encode_uuid(zr_asn_buffer_t& out, const uuid_t& uuid) {
    auto* block = static_cast<unsigned char*>(std::malloc(sizeof envelope + uuid_room));
    if (block == nullptr) return false;
    unsigned char* const begin = block + sizeof envelope + 2;
    unsigned char* at = put_forward(begin, static_cast<int32_t>(uuid.time_low));
    at = put_forward(at, uuid.time_mid);
    at = put_forward(at, uuid.time_hi_and_version);
    at = put_forward(at, uuid.clock_seq_hi_and_reserved);
    at = put_forward(at, uuid.clock_seq_low);
    at[0] = tag_octets;
    at[1] = sizeof uuid.node;
    std::memcpy(at + 2, uuid.node, sizeof uuid.node);
    at += 2 + sizeof uuid.node;
    std::memcpy(block, envelope, sizeof envelope);
    begin[-2] = tag_sequence;
    begin[-1] = static_cast<unsigned char>(at - begin);
    out.length = static_cast<unsigned>(at - block);
    out.data = block;
    return true;
}

// Nothing has to be released here, so it is filled in place.
template <>
bool decode(const zr_asn_buffer_t& in, uuid_t& out) {
    reader from;
    return open(in, from) && get(from, out);
}

static const handwritten_peers<uuid_workload, encode_uuid> peers;

}  // namespace bench
