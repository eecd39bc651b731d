#include "asn1/framing.h"

#include <algorithm>

#include "asn1/envelope.h"

namespace zr {

// Octets up to `until` have to be there.
framing envelope_framing::need(size_t until, size_t length) {
    if (until > most_) return framing::never;
    missing_ = until - length;
    return framing::incomplete;
}

// Steps over one value or, where its length is indefinite, into it. `complete` says only that there is nothing to wait
// for.
framing envelope_framing::step(const unsigned char* octets, size_t length) {
    // The shortest value has two octets.
    size_t at = next_;
    if (length - at < 2) return need(at + 2, length);
    const unsigned char first = octets[at];
    const bool constructed = (first & 0x20) != 0;
    ++at;
    if ((first & 0x1F) == 0x1F) {
        while (at != length && (octets[at] & 0x80) != 0)
            ++at;
        if (at == length) return need(at + 2, length);
        if (++at == length) return need(at + 1, length);
    }
    const unsigned char count = octets[at++];
    if (first == 0 && open_ != 0) {
        if (count != 0) return framing::never;
        --open_;
        next_ = at;
        return framing::complete;
    }
    if (count == 0x80) {
        if (!constructed) return framing::never;
        ++open_;
        next_ = at;
        return framing::complete;
    }
    uint64_t contents = count;
    if (count > 0x80) {
        contents = 0;
        size_t left = count & 0x7F;
        if (length - at < left) return need(at + left, length);
        for (; left != 0; --left) {
            if (contents >> 56 != 0) return framing::never;
            contents = contents << 8 | octets[at++];
        }
    }
    if (at > most_ || contents > most_ - at) return framing::never;
    const size_t stop = at + static_cast<size_t>(contents);
    if (stop > length) return need(stop, length);
    next_ = stop;
    return framing::complete;
}

framing envelope_framing::look(const void* octets, size_t length) {
    const auto* data = static_cast<const unsigned char*>(octets);
    length = std::min(length, most_);
    missing_ = 0;
    if (state_ != framing::incomplete) return state_;
    if (!header_seen_) {
        // Four octets of header, of which the first one counts all, and the least value. A header that ends among its
        // own four holds no record.
        if ((length > 0 && data[0] < envelope_header_octets) || (length > 2 && data[2] != 0xAC) ||
            (length > 3 && data[3] != 0xDC))
            return state_ = framing::never;
        const size_t header = std::max<size_t>(length > 0 ? data[0] : 0, envelope_header_octets);
        if (length < header) {
            const framing needed = need(std::max<size_t>(header, envelope_header_octets + 2), length);
            return state_ = needed;
        }
        next_ = data[0];
        header_seen_ = true;
    }
    do {
        const framing stepped = step(data, length);
        if (stepped != framing::complete) return state_ = stepped;
    } while (open_ != 0);
    return state_ = framing::complete;
}

framing envelope_length(const void* octets, size_t length, size_t most, size_t& count) {
    envelope_framing framed(most);
    const framing found = framed.look(octets, length);
    count = found == framing::complete ? framed.length() : found == framing::incomplete ? framed.missing() : 0;
    return found;
}

}  // namespace zr
