// sample: values of a record, for tests.
#include "json/describe/sample.h"

#include <cstdio>

#include "asn1/status.h"
#include "asn1/status_text.h"
#include "asn1/zrasnapi.h"
#include "base/file_output.h"
#include "base/library.h"
#include "json/base/record_holder.h"
#include "json/document/record_reader.h"
#include "verbs/octets_output.h"
#include "verbs/verbs.h"

namespace zr::tool {

int run_sample(const sample_options& options) {
    using form = sample_options::form;
    const record_type& type = *options.record;
    file_output out(options.output);
    if (options.as == form::json) {
        out.paint_json(options.color);
        write_sample(out, type, options.seed, options.filled,
                     options.compact ? json_layout::one_line : json_layout::indented);
        out.put('\n');
    } else {
        record_holder record(type);
        json_error error;
        encoding octets;
        int status = zr_err_no_match;
        if (read_json(sample_json(type, options.seed, options.filled), type, record.get(), error))
            status = type.encode(octets.out(), record.get(), static_cast<int>(options.version));
        if (status != zr_ok) {
            std::fprintf(stderr, "%s: %s (%s, %d)\n", type.name, status_text(status), status_name(status), status);
            return exit_refused;
        }
        write_octets(out, octets, options.as == form::hex, options.as == form::base64);
    }
    out.close();
    return exit_good;
}

}  // namespace zr::tool
