// The fields of a record as JSON (docs/tool.md, "records --json").
#pragma once

#include "asn1/record/registry.h"
#include "json/base/output.h"

namespace zr::json {

// Writes an object with a line for each field; no line end behind it.
void write_fields(output& out, const record_type& type);
// An array of them: all records that the library has.
void write_all_fields(output& out);

}  // namespace zr::json
