// canon: what is accepted, in the library's own form.
#include <cstdio>
#include <optional>

#include "asn1/status.h"
#include "asn1/status_text.h"
#include "asn1/zrasnapi.h"
#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/ber/losses.h"
#include "verbs/each_input.h"
#include "verbs/explanation.h"
#include "verbs/octets_output.h"
#include "verbs/record_choice.h"
#include "verbs/verbs.h"

namespace zr::tool {

int run_canon(const canon_options& options) {
    std::optional<file_output> out;
    record_chooser chooser({options.version, options.color, secret_values::hidden});
    const int code = for_each_record(options, [&](const octets_input& in) -> int {
        const record_type* const type = options.record != nullptr ? options.record : chooser.choose(in);
        if (type == nullptr) return exit_refused;
        record_holder record(*type);
        int status = decode_octets(*type, in.data(), in.size(), record.get(), options.version);
        if (status != zr_ok) {
            if (out) out->flush();
            print_explanation(in, type, explain(in.data(), in.size(), *type, status, options.version), options.color,
                              secret_values::hidden);
            return exit_refused;
        }
        encoding octets;
        status = type->encode(octets.out(), record.get(), static_cast<int>(options.version));
        if (status != zr_ok) {
            std::fprintf(stderr, "%s: %s: %s (%s, %d)\n", in.label().c_str(), type->name, status_text(status),
                         status_name(status), status);
            return exit_refused;
        }
        if (!out) out.emplace(options.output);
        write_octets(*out, octets, options.hex, options.base64);
        // What the library's form has not.
        int code_of_losses = exit_good;
        find_losses(in.data(), in.size(), envelope_header_size(in.data(), in.size()), *type, record.get(),
                    [&](const loss& lost) {
                        print_loss(in.label(), lost);
                        code_of_losses = exit_refused;
                    });
        return code_of_losses;
    });
    if (out) out->close();
    return code;
}

}  // namespace zr::tool
