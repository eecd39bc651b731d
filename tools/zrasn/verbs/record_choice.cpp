#include "verbs/record_choice.h"

#include <cstdio>
#include <string>

#include "asn1/status.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "verbs/explanation.h"

namespace zr::tool {

namespace {

const record_type& any_record() { return **modules().modules[0]->begin(); }

int status_of(const octets_input& in, const record_type& type, unsigned version) {
    record_holder record(type);
    return decode_octets(type, in.data(), in.size(), record.get(), version);
}

}  // namespace

bool has_bad_envelope(const octets_input& in, unsigned version) {
    return status_of(in, any_record(), version) == zr_err_bad_envelope;
}

record_match match_input(const octets_input& in) {
    const size_t header = envelope_header_size(in.data(), in.size());
    return match_records(in.data() + header, in.size() - header, known_records());
}

void refuse_all(const octets_input& in, const choice_options& options) {
    record_match match;
    if (has_bad_envelope(in, options.version) || (match = match_input(in)).is_no_sequence) {
        const int status = status_of(in, any_record(), options.version);
        std::fprintf(stderr, "%s: fits none of the records\n", in.label().c_str());
        print_explanation(in, nullptr, explain(in.data(), in.size(), any_record(), status, options.version),
                          options.color, options.secrets);
        return;
    }
    std::string nearest;
    for (const record_type* type : match.nearest)
        nearest += (nearest.empty() ? "; nearest is " : ", and as near ") + std::string(type->name);
    std::fprintf(stderr, "%s: fits none of the records%s\n", in.label().c_str(), nearest.c_str());
    if (match.nearest.empty()) return;
    const record_type& type = *match.nearest.front();
    const int status = status_of(in, type, options.version);
    print_explanation(in, &type, explain(in.data(), in.size(), type, status, options.version), options.color,
                      options.secrets);
}

const record_type* record_chooser::choose(const octets_input& in) {
    const record_match match = has_bad_envelope(in, options_.version) ? record_match{} : match_input(in);
    if (match.fitting.empty()) {
        refuse_all(in, options_);
        return nullptr;
    }
    const record_type* const first = match.fitting.front();
    if (match.fitting.size() == 1) {
        if (first != last_) std::fprintf(stderr, "%s: taken for %s\n", in.label().c_str(), first->name);
        return last_ = first;
    }
    std::string names;
    for (const record_type* type : match.fitting)
        names += (names.empty() ? "" : ", ") + std::string(type->name);
    std::fprintf(stderr, "%s: fits several records, of which one has to be named: %s\n", in.label().c_str(),
                 names.c_str());
    return nullptr;
}

}  // namespace zr::tool
