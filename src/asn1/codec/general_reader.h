// Decoding into a structure from octets in any form, driven by the record's table of fields.
#pragma once

#include "asn1/codec/quick_reader.h"
#include "asn1/codec/value_reader.h"
#include "asn1/record/decoding.h"
#include "asn1/record/record_type.h"

namespace zr {

// A list of more elements than its count holds, the one that begins first: where, and whose it is.
struct uncounted_list {
    uint32_t at = UINT32_MAX;
    const char* module = nullptr;
};

// How octets are read, and what comes of it besides the structure.
struct general_reading {
    refusal* found = nullptr;               // where and why octets are refused
    bool marks_texts = false;               // the block of every text begins with a text_mark
    const decode_limits* limits = nullptr;  // with them nothing beyond them is built
    uint32_t locate = UINT32_MAX;           // refuse what holds this octet, for the sake of `found`

    octet_position behind = nullptr;  // the octets that were read
    uncounted_list uncounted;
    decode_limit passed = decode_limit::none;
};

// read_any_form reads one SEQUENCE into a structure that is all zero. Returns 0 or the status of the object tree.
// Whatever it returns or throws (zr_asn_memexception), the structure then holds what was read, and the record's release
// function releases it. Records may nest to any depth.
//
// A list of more elements than its count can hold is read to its end, lest other faults behind it go unseen; what the
// structure has no room for is dropped. It is told in `uncounted` and is no failure here. A limit that is passed is
// 275062885.
int read_any_form(const record_type& type, input in, void* out, general_reading& reading);

}  // namespace zr
