// check: whether an encoding fits a record, and where it deviates from what the library writes.
#include <cstdio>
#include <string>

#include "asn1/status.h"
#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/ber/deviations.h"
#include "json/ber/record_match.h"
#include "verbs/explanation.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

size_t header_of(const octets_input& in) { return envelope_header_size(in.data(), in.size()); }

int decode(const octets_input& in, const record_type& type, record_holder& record, const check_options& options) {
    return decode_octets(type, in.data(), in.size(), record.get(), options.version);
}

int refuse(const octets_input& in, const record_type& type, int status, const check_options& options) {
    print_explanation(in, &type, explain(in.data(), in.size(), type, status, options.version), options.color,
                      options.secrets);
    return exit_refused;
}

// One line on a record that fits; true when the octets are the library's own.
bool report_fit(const octets_input& in, const record_type& type, record_holder& record, output& out, bool with_places) {
    uint64_t count = 0;
    find_deviations(in.data(), in.size(), header_of(in), type, record.get(), [&](const deviation& found) {
        ++count;
        if (!with_places) return;
        out.write(in.label() + ":" + std::to_string(found.offset) + ": ");
        if (!found.path.empty()) out.write(found.path + ": ");
        out.write(found.what + "\n");
    });
    out.write(
        in.label() + ": fits " + type.name + ", " +
        (count == 0 ? "as the library writes it" : counted(count, "deviation") + " from what the library writes"));
    out.write(header_of(in) == 0 ? " (no envelope header)\n" : "\n");
    return count == 0;
}

int check_one(const octets_input& in, const record_type& type, const check_options& options) {
    record_holder record(type);
    const int status = decode(in, type, record, options);
    if (status != zr_ok) return refuse(in, type, status, options);
    file_output out("");
    const bool exact = report_fit(in, type, record, out, true);
    out.close();
    return exact ? exit_good : exit_refused;
}

// Says which record comes nearest and why it does not fit, if one is near.
int refuse_all(const octets_input& in, const record_match& match, const check_options& options) {
    std::string nearest;
    for (const record_type* type : match.nearest)
        nearest += (nearest.empty() ? "; nearest is " : ", and as near ") + std::string(type->name);
    std::fprintf(stderr, "%s: fits none of the records%s\n", in.label().c_str(), nearest.c_str());
    if (match.nearest.empty()) return exit_refused;
    record_holder record(*match.nearest.front());
    return refuse(in, *match.nearest.front(), decode(in, *match.nearest.front(), record, options), options);
}

// The same of octets that no record matters for: their envelope is wrong, or they are no SEQUENCE.
int refuse_any(const octets_input& in, const record_type& type, int status, const check_options& options) {
    std::fprintf(stderr, "%s: fits none of the records\n", in.label().c_str());
    print_explanation(in, nullptr, explain(in.data(), in.size(), type, status, options.version), options.color,
                      options.secrets);
    return exit_refused;
}

// Without a record: all whose shape fits.
int check_all(const octets_input& in, const check_options& options) {
    const record_type& any = **modules().modules[0]->begin();
    record_holder held(any);
    const int status_of_any = decode(in, any, held, options);
    if (status_of_any == zr_err_bad_envelope) return refuse_any(in, any, status_of_any, options);
    const size_t header = header_of(in);
    const record_match match = match_records(in.data() + header, in.size() - header, known_records());
    if (match.fitting.size() == 1) return check_one(in, *match.fitting.front(), options);
    if (match.is_no_sequence) return refuse_any(in, any, status_of_any, options);
    if (match.fitting.empty()) return refuse_all(in, match, options);
    file_output out("");
    bool exact = false;
    for (const record_type* type : match.fitting) {
        record_holder record(*type);
        const int status = decode(in, *type, record, options);
        if (status != zr_ok) return refuse(in, *type, status, options);
        exact = report_fit(in, *type, record, out, false) || exact;
    }
    out.close();
    return exact ? exit_good : exit_refused;
}

}  // namespace

int run_check(const check_options& options) {
    const octets_input in = read_input(options.file, options.from, wanted_input::record, options.version);
    const int code = options.record != nullptr ? check_one(in, *options.record, options) : check_all(in, options);
    if (in.remark().empty()) return code;
    std::fprintf(stderr, "%s\n", in.remark().c_str());
    return exit_refused;
}

}  // namespace zr::tool
