// The program calls what the library of JSON is made of (src/json) by its plain names.
#pragma once

namespace zr::json {}

namespace zr::tool {

using namespace json;

}  // namespace zr::tool
