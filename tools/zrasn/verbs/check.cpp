// check: whether an encoding fits a record, and where it deviates from what the library writes.
#include <cstdio>
#include <string>
#include <vector>

#include "asn1/status.h"
#include "base/file_output.h"
#include "base/library.h"
#include "base/limited_output.h"
#include "input/input.h"
#include "input/line_reader.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/ber/deviations.h"
#include "json/ber/record_match.h"
#include "verbs/each_input.h"
#include "verbs/explanation.h"
#include "verbs/line_answers.h"
#include "verbs/record_choice.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

size_t header_of(const octets_input& in) { return envelope_header_size(in.data(), in.size()); }

class checker {
public:
    explicit checker(const check_options& options) : options_(options), out_("") {}

    int run() {
        const int code =
            options_.lines
                ? for_each_file(options_.files, [this](const std::string& file) { return check_lines(file); })
                : for_each_record(options_,
                                  [this](const octets_input& in) { return count(check(in, options_.record)); });
        if (options_.lines || records_ > 1)
            out_.write("all: " + counted(records_, "record") + ", " + std::to_string(fitting_) + " fit, " +
                       std::to_string(deviating_) + " with deviations, " + std::to_string(refused_) + " do not fit\n");
        out_.close();
        return undecided_ ? graver(code, exit_refused) : code;
    }

private:
    int count(int code) {
        ++records_;
        ++(code == exit_good ? fitting_ : code == exit_deviates ? deviating_ : refused_);
        return code;
    }

    int check_lines(const std::string& file) {
        line_reader lines(file, out_);
        line_progress progress;
        std::vector<unsigned char> octets;
        int code = exit_good;
        for (std::string_view line; lines.next(line); progress.accepted()) {
            const std::string label = lines.label() + ": line " + std::to_string(lines.number());
            const record_type* const named = take_record(line);
            text_decoder decoder(options_.from);
            if (octets.size() < line.size()) octets.resize(line.size());
            const char* at = line.data();
            const size_t size = decoder.decode(at, at + line.size(), octets.data(), octets.size());
            int found = exit_refused;
            if (lines.too_long() || decoder.refused() || !decoder.finish())
                message(label + ": " + (lines.too_long() ? "longer than 1 GiB" : decoder.problem()));
            else
                found =
                    check(octets_input::view(octets.data(), size, label), named != nullptr ? named : options_.record);
            code = graver(code, count(found));
        }
        return code;
    }

    // What goes to standard error stands where it belongs between what was found before and after.
    void message(const std::string& text) {
        out_.flush();
        std::fprintf(stderr, "%s\n", text.c_str());
    }

    int check(const octets_input& in, const record_type* type) {
        if (type != nullptr) return check_one(in, *type);
        const record_match match = has_bad_envelope(in, options_.version) ? record_match{} : match_input(in);
        if (match.fitting.size() == 1) return check_one(in, *match.fitting.front());
        if (match.fitting.empty()) {
            out_.flush();
            refuse_all(in, {options_.version, options_.color, options_.secrets});
            return exit_refused;
        }
        int code = exit_deviates;
        std::string names;
        for (const record_type* fitting : match.fitting) {
            const int one = check_one(in, *fitting, false);
            if (one == exit_refused) return one;
            if (one == exit_good) code = exit_good;
            names += (names.empty() ? "" : ", ") + std::string(fitting->name);
        }
        message(in.label() + ": fits several records, of which one has to be named: " + names);
        undecided_ = true;
        return code;
    }

    int check_one(const octets_input& in, const record_type& type, bool with_places = true) {
        record_holder record(type);
        const int status = decode_octets(type, in.data(), in.size(), record.get(), options_.version);
        if (status == zr_ok) return report_fit(in, type, record, with_places);
        out_.flush();
        print_explanation(in, &type, explain(in.data(), in.size(), type, status, options_.version), options_.color,
                          options_.secrets);
        return exit_refused;
    }

    // One line on a record that fits.
    int report_fit(const octets_input& in, const record_type& type, record_holder& record, bool with_places) {
        uint64_t count = 0, left_out = 0;
        read_ += in.size();
        find_deviations(in.data(), in.size(), header_of(in), type, record.get(), [&](const deviation& found) {
            ++count;
            if (!with_places || options_.quiet) return;
            const std::string line = in.label() + ":" + std::to_string(found.offset) + ": " + found.path +
                                     (found.path.empty() ? "" : ": ") + found.what + "\n";
            if (left_out != 0 || (!options_.all && said_ + line.size() > most_shown(read_))) {
                ++left_out;
                return;
            }
            said_ += line.size();
            out_.write(line);
        });
        const int code = count == 0 ? exit_good : exit_deviates;
        if (options_.quiet) return code;
        out_.write(
            in.label() + ": fits " + type.name + ", " +
            (count == 0 ? "as the library writes it" : counted(count, "deviation") + " from what the library writes"));
        if (left_out != 0) out_.write(", " + std::to_string(left_out) + " of them not shown (--all shows them)");
        out_.write(header_of(in) == 0 ? " (no envelope header)\n" : "\n");
        return code;
    }

    const check_options& options_;
    file_output out_;
    uint64_t read_ = 0;  // octets of records that fit
    uint64_t said_ = 0;  // octets of lines about where they deviate
    uint64_t records_ = 0;
    uint64_t fitting_ = 0;
    uint64_t deviating_ = 0;
    uint64_t refused_ = 0;
    bool undecided_ = false;  // octets fit several records
};

}  // namespace

int run_check(const check_options& options) { return checker(options).run(); }

}  // namespace zr::tool
