// decode: envelopes to JSON.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "asn1/asnbase/status.h"
#include "envelope.h"
#include "input.h"
#include "json_writer.h"
#include "lines.h"
#include "losses.h"
#include "output.h"
#include "record_holder.h"
#include "refusal.h"
#include "text_decoder.h"
#include "verbs.h"

namespace zr::tool {

namespace {

// The octets of a line of text; false and what is wrong when it is none.
bool octets_of(std::string_view line, input_form form, std::vector<unsigned char>& octets, line_refusal& refusal) {
    text_decoder decoder(form);
    octets.resize(line.size());
    const char* at = line.data();
    octets.resize(decoder.decode(at, at + line.size(), octets.data(), octets.size()));
    if (!decoder.refused() && decoder.finish()) return true;
    refusal = {0, static_cast<uint64_t>(at - line.data()), {}, decoder.problem()};
    return false;
}

// What a record that was decoded has and its JSON has not.
void print_loss(const std::string& label, const loss& lost) {
    std::fprintf(stderr, "%s:%zu: %s%s%s\n", label.c_str(), lost.offset, lost.path.c_str(),
                 lost.path.empty() ? "" : ": ", lost.what.c_str());
}

int decode_lines(const decode_options& options) {
    const record_type& type = *options.record;
    line_reader lines(options.file);
    output out(options.output);
    line_progress progress;
    bool all_given = true;
    std::vector<unsigned char> octets;
    for (std::string_view line; lines.next(line);) {
        line_refusal wrong{};
        bool good = octets_of(line, options.from, octets, wrong);
        refusal refused;
        if (good) {
            record_holder record(type);
            const int status = decode_octets(type, octets.data(), octets.size(), record.get());
            good = status == zr_ok;
            if (good) {
                write_json(out, type, record.get(), json_layout::one_line);
                out.put('\n');
                find_losses(octets.data(), octets.size(), envelope_header_size(octets.data(), octets.size()), type,
                            record.get(), [&](const loss& lost) {
                                print_loss(lines.label() + ": line " + std::to_string(lines.number()), lost);
                                all_given = false;
                            });
                progress.accepted();
            } else {
                refused = explain(octets.data(), octets.size(), type, status);
                wrong = {refused.status, refused.offset, refused.path, refused.message};
            }
        }
        if (!good) {
            const std::string message = "line " + std::to_string(lines.number()) + ": " + std::string(wrong.message);
            wrong.message = message;
            write_line_refusal(out, wrong);
            progress.refused();
        }
        if (out.is_terminal()) out.flush();
    }
    out.close();
    return progress.any_refused() || !all_given ? exit_refused : exit_good;
}

}  // namespace

int run_decode(const decode_options& options) {
    if (options.lines) return decode_lines(options);
    const octets_input in = read_input(options.file, options.from, wanted_input::record);
    const record_type& type = *options.record;
    record_holder record(type);
    const int status = decode_octets(type, in.data(), in.size(), record.get());
    if (status != zr_ok) {
        print_refusal(in, &type, explain(in.data(), in.size(), type, status), options.color);
        return exit_refused;
    }
    output out(options.output);
    write_json(out, type, record.get(), options.compact ? json_layout::one_line : json_layout::indented);
    out.put('\n');
    out.close();
    bool all_given = in.remark().empty();
    if (!all_given) std::fprintf(stderr, "%s\n", in.remark().c_str());
    find_losses(in.data(), in.size(), envelope_header_size(in.data(), in.size()), type, record.get(),
                [&](const loss& lost) {
                    print_loss(in.label(), lost);
                    all_given = false;
                });
    return all_given ? exit_good : exit_refused;
}

}  // namespace zr::tool
