// Values of a record that nobody had to write: the same wherever the library is built.
#pragma once

#include <cstdint>
#include <string>

#include "asn1/record/registry.h"
#include "json/document/record_writer.h"

namespace zr::json {

// sample_json gives a value as JSON on one line that follows from the record's fields, the seed and `filled` alone.
// Seed 0 is the smallest value, or filled the example of the pages: each optional record is there, lists have two
// elements, slots are empty and used in turns. Any other seed draws numbers, texts and lists; filled ones have
// something in every member.
std::string sample_json(const record_type& type, uint64_t seed, bool filled);

// Writes the same as write_json does.
void write_sample(output& out, const record_type& type, uint64_t seed, bool filled, json_layout layout);

}  // namespace zr::json
