#include "json/document/place.h"

#include "json/document/scalars.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

using takes = json_place::takes;

json_place place_of_value(const field& member, bool or_null) {
    if (!has_member(member.value)) return {takes::nothing, &member, nullptr, or_null};
    if (member.value != value_kind::record) return {takes::scalar, &member, nullptr, or_null};
    const record_type* record = member.record;
    return {is_uuid(*record) ? takes::uuid : takes::object, &member, record, or_null};
}

}  // namespace

json_place place_of_record(const record_type& type) {
    return {is_uuid(type) ? takes::uuid : takes::object, nullptr, &type, false};
}

json_place place_of_member(const field& member) {
    if (is_sequence_of(member)) return {takes::array, &member, nullptr, false};
    return place_of_value(member, member.held == holding::optional);
}

json_place place_of_element(const field& member, uint32_t index) {
    if (index >= most_places(member)) return {takes::nothing, &member, nullptr, false};
    return place_of_value(member, member.held == holding::slots);
}

std::string describe(const json_place& place) {
    const std::string null = place.or_null ? " or null" : "";
    switch (place.what) {
        case takes::scalar:
            return describe_scalar(*place.member);
        case takes::uuid:
            return "a UUID such as \"6ba7b810-9dad-11d1-80b4-00c04fd430c8\"" + null;
        case takes::object:
            return "an object (" + std::string(place.record->name) + ")" + null;
        case takes::array:
            if (place.member->held != holding::slots) return "an array";
            return "an array of at most " + std::to_string(place.member->size) + " elements";
        case takes::nothing:
            break;
    }
    return "at most " + std::to_string(most_places(*place.member)) + " elements";
}

}  // namespace zr::json
