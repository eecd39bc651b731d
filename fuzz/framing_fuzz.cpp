// Where an envelope ends: looks at octets that come in pieces answer as one look at all of them does, no look asks for
// more than completes the envelope, and decoding a complete one never asks for more.
//
// The first two octets pick the record. The others are received: as they are, or behind an envelope's header where they
// begin a SEQUENCE.
#include <algorithm>
#include <random>

#include "asn1/framing.h"
#include "asn1/record/decoding.h"
#include "pick_record.h"
#include "require.h"
#include "support/routes.h"

namespace {

using namespace zr_test;

void check(const zr::record_type& type, octets& received, size_t most) {
    size_t count = 0;
    const zr::framing answer = zr::envelope_length(received.data(), received.size(), most, count);
    std::minstd_rand random(static_cast<unsigned>(received.size()));
    zr::envelope_framing framed(most);
    for (size_t length = 0;;) {
        // A block of its own: its last octet is the block's.
        const octets come(received.begin(), received.begin() + static_cast<long>(length));
        const zr::framing looked = framed.look(come.data(), length);
        size_t alone = 0;
        require(zr::envelope_length(come.data(), length, most, alone) == looked, "pieces change the answer");
        if (looked == zr::framing::incomplete) {
            require(alone == framed.missing() && alone != 0, "pieces change what is missing");
            require(length + alone <= most, "more is asked for than permitted");
            require(answer != zr::framing::complete || length + alone <= count, "more is asked for than needed");
        } else {
            require(looked == answer, "more octets change the answer");
            require(looked == zr::framing::never || (framed.length() == count && count <= length && count <= most),
                    "another length");
        }
        if (length == received.size()) break;
        length = std::min<size_t>(length + 1 + random() % (1 + received.size() / 16), received.size());
    }

    structure out(type), strict_out(type);
    zr::decode_report report;
    zr::decode_options options;
    options.limits.octets = most;
    if (type.decode(received.data(), received.size(), out.get(), options, report) != 0)
        require(report.missing == 0 || answer == zr::framing::incomplete, "a decode asks for more of what is complete");
    options.strict = true;
    if (type.decode(received.data(), received.size(), strict_out.get(), options, report) == 0)
        require(answer == zr::framing::complete && count == received.size(), "what strict accepts is not complete");
}

}  // namespace

const zr::record_type& zr_test::record_of(const uint8_t* head) { return pick_record(head); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    const zr::record_type& type = record_of(data);
    octets received(data + 2, data + size);
    if (received[0] == 0x30) received = envelope(received).all();
    check(type, received, size_t{1} << 20);
    check(type, received, received.size() - received.size() / 8);
    return 0;
}
