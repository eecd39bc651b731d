// Decoding into a structure from octets in any form, driven by the record's table of fields.
#pragma once

#include "asn1/codec/value_reader.h"
#include "asn1/record/record_type.h"

namespace zr {

// read_any_form reads one SEQUENCE into a structure that is all zero. Returns 0 or the status of the object tree; with
// a `found` it says there where and why. Whatever it returns or throws (zr_asn_memexception), the structure then holds
// what was read, and the record's release function releases it. Records may nest to any depth.
//
// A list of more elements than its count can hold is read to its end, lest other faults behind it go unseen; what the
// structure has no room for is dropped, and 275062885 is the status when nothing else is wrong.
int read_any_form(const record_type& type, input in, void* out, refusal* found);

// A list of more elements than its count holds, the one that begins first: where, and whose it is.
struct uncounted_list {
    uint32_t at = UINT32_MAX;
    const char* module = nullptr;
};

// read_marked_texts reads as read_any_form does, but the block of every text begins with a text_mark. A list of too
// many elements is told in `uncounted` and is no failure here.
int read_marked_texts(const record_type& type, input in, void* out, uncounted_list& uncounted);

}  // namespace zr
