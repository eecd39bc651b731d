// The inputs of a verb, one after the other.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "base/library.h"
#include "input/envelopes.h"
#include "input/input.h"

namespace zr::tool {

// for_each_file calls `visit(file)`, which gives an exit code, for each, and gives the gravest. Where there are
// several, one that cannot be read does not keep the others from being read.
template <class Visit>
int for_each_file(const std::vector<std::string>& files, const Visit& visit) {
    int code = exit_good;
    for (const std::string& file : files) {
        try {
            code = graver(code, visit(file));
        } catch (const input_error& error) {
            if (files.size() == 1) throw;
            std::fprintf(stderr, "%s\n", error.message.c_str());
            code = graver(code, error.code);
        }
    }
    return code;
}

// for_each_record is the same for the envelopes of the files: `visit(octets)` is called for each.
template <class Options, class Visit>
int for_each_record(const Options& options, const Visit& visit) {
    return for_each_file(options.files, [&](const std::string& file) {
        const bool told = options.framing.how > framing_form::kind::one;
        const octets_input in =
            read_input(file, options.from, told ? wanted_input::anything : wanted_input::record, options.version);
        int code = exit_good;
        const envelope_count met = for_each_envelope(
            in, options.framing, [&](const octets_input& octets) { code = graver(code, visit(octets)); });
        for (const std::string& remark : {met.problem, in.remark()}) {
            if (remark.empty()) continue;
            std::fprintf(stderr, "%s\n", remark.c_str());
            code = graver(code, exit_refused);
        }
        return code;
    });
}

}  // namespace zr::tool
