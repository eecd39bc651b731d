#include "support/records_json.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "asn1/record/members.h"
#include "support/hex.h"
#include "support/records.h"

namespace zr_test {

using nlohmann::json;
using zr::field;
using zr::holding;
using zr::place;
using zr::value_kind;

namespace {

void require(bool holds, const std::string& what) {
    if (!holds) throw std::invalid_argument("JSON: " + what);
}

void store_number(void* member, zr::integer_type type, const json& value) {
    require(value.is_number_integer(), "not an integer");
    const auto number = value.get<int64_t>();
    zr::store_integer(member, type, static_cast<int32_t>(number));
    const auto stored = zr::load_integer(member, type);
    const bool unsigned_32 = !type.is_signed && type.octets == 4;
    require(number == (unsigned_32 ? int64_t{static_cast<uint32_t>(stored)} : stored), "a number out of range");
}

// Fills the value in a place.
void fill_value(const field& field, void* contents, void* where, const json& value) {
    switch (field.value) {
        case value_kind::integer:
            store_number(where, field.integer, value);
            break;
        case value_kind::version:
            break;
        case value_kind::text:
        case value_kind::stored_text:
            place<char*>(where, 0) = copy_text(value.get<std::string>());
            break;
        case value_kind::octets: {
            const std::vector<unsigned char> octets = bytes(value.get<std::string>());
            if (octets.empty() && field.held == holding::optional) break;
            place<char*>(where, 0) = copy_text({octets.begin(), octets.end()});
            zr::store_count(field, contents, static_cast<uint32_t>(octets.size()));
            break;
        }
        case value_kind::fixed_octets: {
            const std::vector<unsigned char> octets = bytes(value.get<std::string>());
            require(octets.size() == field.size, "not as many octets as the member has");
            std::memcpy(where, octets.data(), octets.size());
            break;
        }
        case value_kind::record:
            if (zr::is_by_pointer(field)) {
                if (value.is_null()) return;
                where = place<void*>(where, 0) = zeroed(field.record->size);
            }
            fill_from_json(*field.record, where, value);
            break;
    }
}

void fill_field(const field& field, void* contents, const json& value) {
    if (field.held == holding::one || field.held == holding::optional)
        return fill_value(field, contents, zr::place_at(field, contents, 0), value);
    require(value.is_array(), field.name + std::string(" is not an array"));
    if (field.held == holding::slots) {
        require(value.size() <= field.size, "more positions than slots");
    } else if (!value.empty()) {
        place<void*>(contents, field.offset) = zeroed(value.size() * field.place_octets);
        zr::store_count(field, contents, static_cast<uint32_t>(value.size()));
    }
    for (uint32_t i = 0; i < value.size(); ++i)
        fill_value(field, contents, zr::place_at(field, contents, i), value[i]);
}

}  // namespace

void fill_from_json(const zr::record_type& type, void* contents, const json& value) {
    require(value.is_object(), type.name + std::string(" is not an object"));
    size_t known = 0;
    for (const field& field : type) {
        if (!zr::has_member(field.value)) continue;
        const auto found = value.find(field.name);
        if (found == value.end()) {
            require(field.held == holding::optional, type.name + std::string(" lacks ") + field.name);
            continue;
        }
        ++known;
        fill_field(field, contents, *found);
    }
    require(known == value.size(), type.name + std::string(" has a member that it does not know"));
}

}  // namespace zr_test
