// schema: the records as an ASN.1 module (X.680) for other compilers.
#include "base/file_output.h"
#include "base/library.h"
#include "json/describe/asn1_module.h"
#include "verbs/verbs.h"

namespace zr::tool {

int run_schema(const schema_options& options) {
    file_output out("");
    write_asn1_module(out, options.modules, options.records);
    out.close();
    return exit_good;
}

}  // namespace zr::tool
