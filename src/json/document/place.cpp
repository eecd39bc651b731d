#include "json/document/place.h"

#include "json/document/scalars.h"

namespace zr::json {

using takes = json_place::takes;

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
