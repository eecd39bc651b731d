#include "asn1/asnstrng/text_writer.h"

#include <algorithm>

namespace zr {

text_writer::room text_writer::grow(zr_buffer_t& out, const unsigned char* at, unsigned int octets, uint64_t expected) {
    take(out, at);
    // At once what is expected, but no more than 64 KiB for a text that may be refused soon; when that is passed half
    // of what there is, so that long texts are moved a few times only.
    const unsigned int half = out.capacity() / 2;
    uint64_t step = half;
    if (expected > out.length()) step = std::min<uint64_t>(expected - out.length(), std::max(half, 65536u));
    // A first block of 128 octets comes of a step of 64.
    if (out.capacity() == 0 && step <= 128) step = 64;
    // Up to 2^32-1 octets; the buffer adds less than 1024 of its own accord.
    const unsigned int spare = UINT32_MAX - 1024 - std::min<unsigned int>(out.capacity(), UINT32_MAX - 1024);
    step = std::max<uint64_t>(64, std::min<uint64_t>(step, spare));  // never fewer than are asked for
    out.make_room(octets, static_cast<unsigned int>(step));
    return room_in(out);
}

}  // namespace zr
