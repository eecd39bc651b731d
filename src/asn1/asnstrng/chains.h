// From any code set to any other.
#pragma once

#include "asn1/asnbase/buffer.h"

namespace zr {

// convert_text appends `text`, which is in code set `from`, to `out` in code set `to` (both zr_code_set). Returns 0;
// 275063211 when a character has no form in `to`, or there is no way between the two.
int convert_text(unsigned int from, const zr_r_buffer_t& text, unsigned int to, zr_buffer_t& out);

}  // namespace zr
