// JSON Schema (2020-12) of records.
#pragma once

#include <vector>

#include "asn1/record/registry.h"
#include "json/base/output.h"

namespace zr::json {

// Writes a schema that accepts the JSON of any of the records and, but for what only a reader of all of it can tell (a
// member that comes twice), nothing that is refused as such; "***" in place of a secret is refused. All that the
// library has when there are none.
void write_json_schema(output& out, const std::vector<const record_type*>& of_records);

}  // namespace zr::json
