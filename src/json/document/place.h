// What may stand at a place of a record's JSON.
#pragma once

#include <cstdint>
#include <string>

#include "json/base/members.h"

namespace zr::json {

struct json_place {
    // A scalar is a value that is no record (json/scalars.h).
    enum class takes : uint8_t { scalar, uuid, object, array, nothing };
    takes what;
    const field* member;        // null for the record itself
    const record_type* record;  // of a UUID or an object
    bool or_null;
};

json_place place_of_record(const record_type& type);
json_place place_of_member(const field& member);
// Of the element behind `index` others; it takes nothing when the member can hold no more.
json_place place_of_element(const field& member, uint32_t index);

// In a message: "expected " and this.
std::string describe(const json_place& place);

}  // namespace zr::json
