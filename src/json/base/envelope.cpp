#include "json/base/envelope.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "asn1/status.h"
#include "asn1/zrasnapi.h"
#include "json/base/hex.h"

namespace zr::json {

size_t envelope_header_size(const unsigned char* data, size_t size) {
    if (lacks_header(data, size) || !has_envelope_header(as_buffer(data, size))) return 0;
    return std::min<size_t>(data[0], size);
}

envelope_fault explain_envelope(const unsigned char* data, size_t size, unsigned version) {
    unsigned char expected_header[envelope_header_octets];
    put_envelope_header(expected_header, static_cast<int>(version));
    const std::string header = hex_text(expected_header, sizeof expected_header);
    const std::string wanted = "the envelope header " + header + " or a SEQUENCE (30)";
    if (size == 0) return {0, "found no octets, expected " + wanted};
    if (size <= envelope_header_octets && std::equal(data, data + size, expected_header))
        return {size, size == envelope_header_octets
                          ? "found the end of the data behind the envelope header, expected a SEQUENCE (30)"
                          : "found the end of the data in the envelope header, expected " + header};
    if (has_envelope_header(as_buffer(data, size)) && data[envelope_version_at] != version)
        return {envelope_version_at, "found version " + std::to_string(data[envelope_version_at]) +
                                         ", expected version " + std::to_string(version)};
    return {0, "found " + hex_text(data, std::min(size, envelope_header_octets)) + ", expected " + wanted};
}

namespace {

// Octets behind an envelope's header, which is put there where it is missing.
class with_header {
public:
    with_header(const unsigned char* data, size_t size, unsigned version) : buffer_(as_buffer(data, size)) {
        if (!lacks_header(data, size)) return;
        whole_.reset(new unsigned char[size + envelope_header_octets]);
        put_envelope_header(whole_.get(), static_cast<int>(version));
        std::memcpy(whole_.get() + envelope_header_octets, data, size);
        buffer_ = {static_cast<unsigned int>(size + envelope_header_octets), whole_.get()};
    }
    const zr_asn_buffer_t& buffer() const { return buffer_; }

private:
    std::unique_ptr<unsigned char[]> whole_;
    zr_asn_buffer_t buffer_;
};

bool is_too_large(size_t size) { return size > most_encoding_octets - envelope_header_octets; }

}  // namespace

int decode_octets(const record_type& type, const unsigned char* data, size_t size, void* contents, unsigned version) {
    if (is_too_large(size)) return zr_err_out_of_memory;
    return type.decode(with_header(data, size, version).buffer(), contents, static_cast<int>(version));
}

decode_report decode_report_of(const record_type& type, const unsigned char* data, size_t size, void* contents,
                               const decode_options& options) {
    decode_report report;
    if (is_too_large(size)) {
        report.status = zr_err_out_of_memory;
        return report;
    }
    const with_header octets(data, size, static_cast<unsigned>(options.version));
    const zr_asn_buffer_t& in = octets.buffer();
    report.status = type.decode(in.data, in.length, contents, options, report);
    return report;
}

decode_report decode_report_of(const record_type& type, const unsigned char* data, size_t size, void* contents,
                               unsigned version, bool strict) {
    decode_options options;
    options.version = static_cast<int>(version);
    options.strict = strict;
    return decode_report_of(type, data, size, contents, options);
}

}  // namespace zr::json
