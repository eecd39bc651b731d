// A text as JSON string.
#pragma once

#include <string_view>

#include "json/base/output.h"

namespace zr::json {

// What may not reach a terminal, and octets that are not UTF-8 (as U+FFFD), is escaped.
void write_json_string(output& out, std::string_view text);

}  // namespace zr::json
