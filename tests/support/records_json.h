// Structures as JSON texts.
//
// A record is an object with the names of its members. Members that count have no name of their own: the pointer beside
// them stands for both, and a version has none. Texts are strings, byte strings strings of lower-case hexadecimal
// digits, lists arrays; an absent record is null or left out; slots are an array with null for empty ones and without
// those behind the last.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "asn1/record/registry.h"

namespace zr_test {

// fill_from_json fills a zeroed structure with blocks from malloc. Throws on anything that does not fit the record.
void fill_from_json(const zr::record_type& type, void* contents, const nlohmann::json& value);

}  // namespace zr_test
