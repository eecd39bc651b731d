#include "json/c/call.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "asn1/status_text.h"
#include "json/base/envelope.h"
#include "json/ber/mismatch.h"

namespace zr::json {

namespace {

constexpr size_t most_structure = 65536;  // octets of options or a report that any version has

// Takes over options of any version: what this one does not know must be 0.
bool take_options(const zrasn_options& given, zrasn_options& taken) {
    if (given.size < sizeof(zrasn_options) || given.size > most_structure) return false;
    const auto* octets = reinterpret_cast<const unsigned char*>(&given);
    std::memcpy(&taken, octets, sizeof(taken));
    return std::all_of(octets + sizeof(taken), octets + given.size, [](unsigned char octet) { return octet == 0; });
}

// Of a long text the front, not cut within a character.
template <size_t room>
void store(char (&to)[room], std::string_view text) {
    size_t count = std::min(text.size(), room - 1);
    if (count < text.size())
        while (count != 0 && (static_cast<unsigned char>(text[count]) & 0xC0) == 0x80)
            --count;
    std::memcpy(to, text.data(), count);
    to[count] = '\0';
}

constexpr size_t or_none(size_t limit) { return limit != 0 ? limit : SIZE_MAX; }

const char* limit_words(decode_limit passed) {
    switch (passed) {
        case decode_limit::octets:
            return "octets";
        case decode_limit::heap:
            return "octets in blocks";
        case decode_limit::elements:
            return "elements";
        case decode_limit::depth:
            return "records that enclose each other";
        case decode_limit::none:
            break;
    }
    return "";
}

std::string message_of(const decode_report& found, const input_octets& octets, size_t before) {
    if (found.passed != decode_limit::none)
        return std::string("found more ") + limit_words(found.passed) + " than the limit, expected fewer";
    if (found.status == zr_err_out_of_memory && found.expected != expectation::fewer_elements)
        return status_text(found.status);
    refusal at = found;
    at.offset -= static_cast<uint32_t>(before);
    return refusal_words(at, octets.data);
}

}  // namespace

call::call(const zrasn_options* options, zrasn_report* report) : report_(report != nullptr ? report : &unseen_) {
    unseen_.size = sizeof(unseen_);
    refused_ = report_->size < sizeof(zrasn_report) || report_->size > most_structure;
    if (refused_) report_ = &unseen_;
    if (options != nullptr && !take_options(*options, asked_)) refused_ = true;
}

decode_options decoding_of(const zrasn_options& asked) {
    decode_options options;
    options.strict = asked.strict != 0;
    if (asked.version != 0) options.version = asked.version & 0xFF;
    options.limits.octets = std::min<size_t>(or_none(asked.most_octets), UINT32_MAX);
    options.limits.heap = or_none(asked.most_heap);
    options.limits.elements = or_none(asked.most_elements);
    options.limits.depth = or_none(asked.most_depth);
    return options;
}

zrasn_report& call::start(int status) {
    const size_t size = report_->size;
    std::memset(static_cast<void*>(report_), 0, size);
    report_->size = size;
    report_->status = status;
    report_->found = report_->expected_tag = -1;
    report_->name = zrasn_status_name(status);
    report_->reason = status == ZRASN_BAD_JSON ? "bad_json" : status_key(status);
    return *report_;
}

int call::succeed(size_t consumed) {
    start(zr_ok).consumed = consumed;
    return zr_ok;
}

int call::refuse(int status, const char* reason, const char* message) {
    zrasn_report& report = start(status);
    if (reason != nullptr) report.reason = reason;
    store(report.message, message != nullptr ? message : zrasn_status_text(status));
    return status;
}

int call::refuse(const decode_report& found, const input_octets& octets, size_t before) {
    zrasn_report& report = start(found.status);
    report.reason = found.reason();
    report.offset = found.offset - std::min<size_t>(found.offset, before);
    report.found = found.found;
    report.missing = found.missing;
    if (found.expected == expectation::value && found.tag != 0) report.expected_tag = found.tag;
    store(report.path, found.path);
    if (found.status != zr_err_bad_envelope) {
        store(report.message, message_of(found, octets, before));
        return found.status;
    }
    if (before == 0 && lacks_header(octets.data, octets.size)) {
        store(report.message,
              "found a SEQUENCE (30), expected the envelope's header before it, or to be asked for bare octets");
        return found.status;
    }
    const envelope_fault fault = explain_envelope(octets.data, octets.size, version());
    report.offset = fault.offset;
    report.found = fault.offset < octets.size ? octets.data[fault.offset] : -1;
    store(report.message, fault.message);
    return found.status;
}

int call::refuse(const json_error& found) {
    decode_report limit;  // for the key
    limit.passed = found.passed;
    limit.status = found.passed != decode_limit::none ? static_cast<int>(zr_err_out_of_memory) : ZRASN_BAD_JSON;
    zrasn_report& report = start(limit.status);
    if (found.passed != decode_limit::none) report.reason = limit.reason();
    if (found.is_redacted) report.reason = "hidden_secret";
    report.offset = found.offset;
    report.line = found.line;
    report.column = found.column;
    store(report.path, found.path);
    store(report.message, found.message);
    return limit.status;
}

int give(call& call, text_output& out, char** text, size_t* length, size_t consumed) {
    *length = out.size();
    *text = out.release();
    return call.succeed(consumed);
}

int call_decode(call& call, const record_type& type, const input_octets& octets, void* structure, size_t& consumed) {
    decode_options options = call.decoding();
    decode_report report;
    std::vector<unsigned char> whole;
    input_octets in = octets;
    size_t before = 0;
    if (call.is_bare()) {
        before = envelope_header_octets;
        if (octets.size > options.limits.octets) return call.refuse(zr_err_out_of_memory, "limit_octets");
        options.limits.octets = std::min<size_t>(options.limits.octets, UINT32_MAX - before) + before;
        whole.resize(before);
        put_envelope_header(whole.data(), options.version);
        whole.insert(whole.end(), octets.data, octets.data + octets.size);
        in = {whole.data(), whole.size()};
    }
    if (type.decode(in.data, in.size, structure, options, report) != zr_ok) return call.refuse(report, octets, before);
    consumed = report.consumed - before;
    return zr_ok;
}

}  // namespace zr::json
