// Decoding octets from a network or a file:
//
//     zr::decoded<attrlist_s_t> list;
//     zr::decode_options options;
//     options.strict = true;
//     options.limits.elements = 10000;
//     zr::decode_report report;
//     if (zr::decode(octets, length, list.out(), options, report) != 0) drop(report.name(), report.offset,
//     report.path);
//
// How long an envelope is, before all of it has come, tells zr::envelope_framing (asn1/framing.h).
#pragma once

#include "asn1/framing.h"
#include "asn1/record/record.h"
#include "zrasn/guard.h"

namespace zr {

// decode fills `out` from the envelope that the octets begin with, whatever they are. Returns 0 or the status, which
// the report has too. `out` is then as after zrAsnDecodeObj: all zero after 275062885 and 275063211, else as it was.
template <class S>
[[nodiscard]] status_of<S> decode(const void* octets, size_t length, S& out, const decode_options& options,
                                  decode_report& report) {
    return record<S>::type.decode(octets, length, &out, options, report);
}

}  // namespace zr
