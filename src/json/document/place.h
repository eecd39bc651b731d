// What may stand at a place of a record's JSON.
#pragma once

#include <cstdint>
#include <string>

#include "json/base/members.h"
#include "json/document/uuid_text.h"

namespace zr::json {

struct json_place {
    // A scalar is a value that is no record (json/scalars.h).
    enum class takes : uint8_t { scalar, uuid, object, array, nothing };
    takes what;
    const field* member;        // null for the record itself
    const record_type* record;  // of a UUID or an object
    bool or_null;
};

// These are asked for each value: calls would be longer than they are.
inline json_place place_of_value(const field& member, bool or_null) {
    using takes = json_place::takes;
    if (!has_member(member.value)) return {takes::nothing, &member, nullptr, or_null};
    if (member.value != value_kind::record) return {takes::scalar, &member, nullptr, or_null};
    const record_type* record = member.record;
    return {is_uuid(*record) ? takes::uuid : takes::object, &member, record, or_null};
}
inline json_place place_of_record(const record_type& type) {
    return {is_uuid(type) ? json_place::takes::uuid : json_place::takes::object, nullptr, &type, false};
}
inline json_place place_of_member(const field& member) {
    if (is_sequence_of(member)) return {json_place::takes::array, &member, nullptr, false};
    return place_of_value(member, member.held == holding::optional);
}
// Of the element behind `index` others; it takes nothing when the member can hold no more.
inline json_place place_of_element(const field& member, uint32_t index) {
    if (index >= most_places(member)) return {json_place::takes::nothing, &member, nullptr, false};
    return place_of_value(member, member.held == holding::slots);
}

// In a message: "expected " and this.
std::string describe(const json_place& place);

}  // namespace zr::json
