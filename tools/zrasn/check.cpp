// check: whether an encoding fits a record, and where it deviates from what the library writes.
#include <string>
#include <vector>

#include "asn1/asnbase/status.h"
#include "decode_octets.h"
#include "deviations.h"
#include "input.h"
#include "locate.h"
#include "output.h"
#include "record_holder.h"
#include "refusal.h"
#include "verbs.h"

namespace zr::tool {

namespace {

std::string counted(uint64_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

size_t header_of(const octets_input& in) { return envelope_header_size(in.data(), in.size()); }

int decode(const octets_input& in, const record_type& type, record_holder& record) {
    return decode_octets(type, in.data(), in.size(), record.get());
}

int refuse(const octets_input& in, const record_type& type, int status, color_mode color) {
    print_refusal(in, type, explain(in.data(), in.size(), type, status), color);
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

int check_one(const octets_input& in, const record_type& type, color_mode color) {
    record_holder record(type);
    const int status = decode(in, type, record);
    if (status != zr_ok) return refuse(in, type, status, color);
    output out("");
    const bool exact = report_fit(in, type, record, out, true);
    out.close();
    return exact ? exit_good : exit_refused;
}

// Without a record: all whose shape fits, or the one that fits furthest.
int check_all(const octets_input& in, color_mode color) {
    std::vector<const record_type*> fitting;
    const record_type* nearest = nullptr;
    size_t furthest = 0;
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            mismatch found;
            const size_t header = header_of(in);
            if (!locate_mismatch(in.data() + header, in.size() - header, *type, found)) {
                fitting.push_back(type);
            } else if (nearest == nullptr || found.offset > furthest) {
                nearest = type;
                furthest = found.offset;
            }
        }
    }
    if (fitting.size() == 1) return check_one(in, *fitting.front(), color);
    if (fitting.empty()) {
        record_holder record(*nearest);
        return refuse(in, *nearest, decode(in, *nearest, record), color);
    }
    output out("");
    bool exact = false;
    for (const record_type* type : fitting) {
        record_holder record(*type);
        const int status = decode(in, *type, record);
        if (status != zr_ok) return refuse(in, *type, status, color);
        exact = report_fit(in, *type, record, out, false) || exact;
    }
    out.close();
    return exact ? exit_good : exit_refused;
}

}  // namespace

int run_check(const check_options& options) {
    const octets_input in = read_input(options.file, options.from);
    return options.record != nullptr ? check_one(in, *options.record, options.color) : check_all(in, options.color);
}

}  // namespace zr::tool
