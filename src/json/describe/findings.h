// What was found out about octets, in JSON.
#pragma once

#include <cstddef>

#include "asn1/record/registry.h"
#include "json/base/text_output.h"
#include "json/ber/record_match.h"

namespace zr::json {

// Writes what zrasn_identify in zrasn/c.h tells of octets without a header; offsets count the `header` octets before
// them.
void write_match(output& out, const record_match& match, const unsigned char* data, size_t size, size_t header);

// Writes what zrasn_check tells of an encoding that decodes as `type` into `contents`. Deviations are left out where
// the text has `most_text` octets.
void write_deviations(text_output& out, const unsigned char* data, size_t size, const record_type& type, void* contents,
                      size_t most_text);

}  // namespace zr::json
