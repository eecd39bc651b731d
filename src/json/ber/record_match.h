// Which records an encoding is, or comes near to.
#pragma once

#include <cstddef>
#include <vector>

#include "asn1/record/registry.h"
#include "json/ber/mismatch.h"

namespace zr::json {

struct record_match {
    std::vector<const record_type*> fitting;
    // When none fits: those that fit furthest, where that is near. Near is half of the octets, or five elements; and no
    // more than five records may come as near.
    std::vector<const record_type*> nearest;
    // None fits, and each fails at its first octet alike, so that no record matters.
    bool is_no_sequence = false;
};

// All records of the library, in the registry's order.
std::vector<const record_type*> known_records();

// match_records tries the records on octets without an envelope's header.
record_match match_records(const unsigned char* data, size_t size, const std::vector<const record_type*>& among);

}  // namespace zr::json
