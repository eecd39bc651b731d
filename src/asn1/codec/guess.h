// Guessing how long an encoding gets, to choose where it is written.
#pragma once

#include "asn1/record/record_type.h"

namespace zr {

// About how many octets the encoding of a structure takes, 2^20 or more for many. Only the time that encoding takes
// depends on it: the middle element of each list stands for all, and texts outside of lists are not measured. A chain,
// of lists of a record in itself with one element each, is taken to have one level.
uint64_t guess_octets(const record_type& type, const void* in);
// The same with all levels of a chain in the record or in what it embeds. To follow a short one takes a tenth of the
// time of writing it, and gains nothing.
uint64_t guess_octets_of_chains(const record_type& type, const void* in);

}  // namespace zr
