#include "asn1/record/decoding.h"

#include "asn1/status.h"

namespace zr {

namespace {

// What a status alone does not tell; null where it tells all.
const char* finer_reason(const decode_report& report) {
    switch (report.passed) {
        case decode_limit::octets:
            return "limit_octets";
        case decode_limit::heap:
            return "limit_heap";
        case decode_limit::elements:
            return "limit_elements";
        case decode_limit::depth:
            return "limit_depth";
        case decode_limit::none:
            break;
    }
    if (report.missing != 0) return "truncated";
    switch (report.expected) {
        case expectation::fewer_elements:
            return report.status == zr_err_out_of_memory ? "list_too_long" : nullptr;
        case expectation::canonical_form:
            return "not_canonical";
        case expectation::end_of_contents:
            return "no_end_of_contents";
        case expectation::value:
        case expectation::end_of_sequence:
            break;
    }
    return nullptr;
}

}  // namespace

const char* decode_report::reason() const {
    const char* finer = status != 0 ? finer_reason(*this) : nullptr;
    return finer != nullptr ? finer : status_key(status);
}

}  // namespace zr
