// schema: the records as an ASN.1 module (X.680) for other compilers, or as JSON Schema.
#include "base/file_output.h"
#include "base/library.h"
#include "json/describe/asn1_module.h"
#include "json/describe/json_schema.h"
#include "verbs/verbs.h"

namespace zr::tool {

int run_schema(const schema_options& options) {
    if (!options.against.empty()) return compare_schemas(options);
    file_output out("");
    if (options.json) {
        out.paint_json(options.color);
        std::vector<const record_type*> records = options.records;
        for (const record_module* module : options.modules)
            records.insert(records.end(), module->begin(), module->end());
        write_json_schema(out, records);
        out.put('\n');
    } else {
        write_asn1_module(out, options.modules, options.records);
    }
    out.close();
    return exit_good;
}

}  // namespace zr::tool
