// Why a text is no JSON.
#pragma once

#include "json/document/events.h"

namespace zr::json {

// explain_fault reads a text once more that was refused at the octet `at`, and says where it stops being JSON and why.
// Throws std::bad_alloc.
json_fault explain_fault(std::string_view text, size_t at);

}  // namespace zr::json
