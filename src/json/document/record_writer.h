// The structure of a record to JSON (docs/tool.md states the form).
#pragma once

#include "asn1/record/registry.h"
#include "json/base/output.h"
#include "json/base/secrets.h"

namespace zr::json {

// Indented lines, or one; a line end is not written behind the last. What nests deeper than 32 levels stands on one
// line in any case, so that the size stays linear.
enum class json_layout { indented, one_line };

// Works with a stack of its own, so that any depth will do. Members marked secret are not_shown in JSON unless
// `secrets` says that they are shown.
void write_json(output& out, const record_type& type, const void* contents, json_layout layout, secret_values secrets);

}  // namespace zr::json
