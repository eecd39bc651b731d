// Guessing how long an encoding gets, to choose where it is written.
#pragma once

#include "asn1/record/record_type.h"

namespace zr {

// About how many octets the encoding of a structure takes, 2^20 or more for many. Only the time that encoding takes
// depends on it: the middle element of each list stands for all, and texts outside of lists are not measured.
uint64_t guess_octets(const record_type& type, const void* in);

}  // namespace zr
