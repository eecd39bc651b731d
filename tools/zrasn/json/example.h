// An example of a record: what its JSON looks like, and a value that is the same wherever the library is built.
#pragma once

#include <string>

#include "asn1/record/registry.h"

namespace zr::tool {

// example_json gives a value with something in every member, on one line: each optional record is there, lists have two
// elements, slots are empty and used in turns. It follows from the record's fields alone.
std::string example_json(const record_type& type);

}  // namespace zr::tool
