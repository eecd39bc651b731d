#include "json/ber/explanation.h"

#include <utility>

#include "asn1/status.h"
#include "asn1/status_text.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/ber/mismatch.h"

namespace zr::json {

namespace {

// Why a decode refuses the octets; the key of success when it does not.
const char* reason_of(const unsigned char* data, size_t size, const record_type& type, unsigned version) {
    record_holder record(type);
    return decode_report_of(type, data, size, record.get(), version).reason();
}

}  // namespace

explanation explain(const unsigned char* data, size_t size, const record_type& type, int status, unsigned version) {
    explanation result{status, 0, {}, reason_of(data, size, type, version), status_text(status)};
    if (status == zr_err_bad_envelope) {
        envelope_fault fault = explain_envelope(data, size, version);
        result.offset = fault.offset;
        result.message = std::move(fault.message);
        return result;
    }
    const size_t header_size = envelope_header_size(data, size);
    mismatch found;
    if (!find_mismatch(data + header_size, size - header_size, type, found)) return result;
    result.offset = header_size + found.offset;
    result.path = found.path;
    result.message = "found " + found.found + ", expected " + found.expected;
    return result;
}

}  // namespace zr::json
