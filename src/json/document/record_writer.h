// The structure of a record to JSON (docs/tool.md states the form).
#pragma once

#include "asn1/record/registry.h"
#include "json/base/output.h"
#include "json/base/secrets.h"
#include "json/document/pen.h"

namespace zr::json {

// Works with a stack of its own, so that any depth will do. Members marked secret are not_shown in JSON unless
// `secrets` says that they are shown.
void write_json(output& out, const record_type& type, const void* contents, json_layout layout, secret_values secrets);
// The same where the pen stands.
void write_json(json_pen& pen, const record_type& type, const void* contents, secret_values secrets);

}  // namespace zr::json
