#include "input/envelopes.h"

#include <algorithm>

#include "asn1/framing.h"
#include "json/base/envelope.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

using kind = framing_form::kind;

constexpr size_t look_behind = size_t{4} << 20;  // octets after which memory of a mapped file is given back

uint64_t length_at(const unsigned char* data, const framing_form& form) {
    uint64_t length = 0;
    for (unsigned i = 0; i != form.length_octets; ++i)
        length = length << 8 | data[form.low_octet_first ? form.length_octets - 1 - i : i];
    return length;
}

// The octets of the envelope that begins there, if all are there; 0 otherwise.
size_t whole_envelope(const unsigned char* data, size_t size) {
    size_t count = 0;
    if (!has_header(data, size)) return 0;
    return envelope_length(data, size, most_encoding_octets, count) == framing::complete ? count : 0;
}

}  // namespace

framing_form recognise_framing(const unsigned char* data, size_t size) {
    const size_t first = whole_envelope(data, size);
    if (first != 0 && has_header(data + first, size - first)) return {kind::concatenated};
    for (unsigned octets : {2u, 4u}) {
        const size_t count = size > octets ? whole_envelope(data + octets, size - octets) : 0;
        for (bool low_octet_first : {false, true}) {
            const framing_form form{kind::prefixed, octets, low_octet_first};
            if (count != 0 && length_at(data, form) == count) return form;
        }
    }
    return {kind::one};
}

envelope_count for_each_envelope(const octets_input& in, const framing_form& told,
                                 const std::function<void(const octets_input&)>& visit) {
    envelope_count met;
    const framing_form form = told.how == kind::automatic ? recognise_framing(in.data(), in.size()) : told;
    met.is_stream = form.how != kind::one;
    if (!met.is_stream) {
        met.envelopes = 1;
        visit(in);
        return met;
    }
    size_t given_back = 0;
    for (size_t at = 0; at != in.size();) {
        const auto stop = [&](const std::string& what) {
            met.problem = in.label() + ":" + std::to_string(at) + ": " + what + ": " +
                          counted(in.size() - at, "octet") + " not read";
            return met;
        };
        const size_t left = in.size() - at;
        size_t count = 0;
        if (form.how == kind::prefixed) {
            if (left < form.length_octets) return stop("a length that is cut off");
            const uint64_t length = length_at(in.data() + at, form);
            if (length > left - form.length_octets)
                return stop("a length of " + counted(length, "octet") + ", more than there are");
            at += form.length_octets;
            count = static_cast<size_t>(length);
        } else if (const framing looked = envelope_length(in.data() + at, left, most_encoding_octets, count);
                   looked == framing::never) {
            return stop("no envelope begins here");
        } else if (looked == framing::incomplete) {
            count = left;  // which a decode refuses with its place
        }
        ++met.envelopes;
        visit(in.part(at, count, "envelope " + std::to_string(met.envelopes) + " (octet " + std::to_string(at) + ")"));
        at += count;
        if (at - given_back < look_behind) continue;
        given_back = at;
        in.forget(at);
    }
    return met;
}

}  // namespace zr::tool
