#include "support/records_json.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "asn1/record/integers.h"
#include "support/hex.h"
#include "support/records.h"

namespace zr_test {

using nlohmann::json;
using zr::field;
using zr::field_kind;
using zr::place;

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

void* made(const zr::record_type& type, const json& value) {
    void* contents = zeroed(type.size);
    fill_from_json(type, contents, value);
    return contents;
}

void fill_list(const field& field, void* contents, const json& value) {
    require(value.is_array(), field.name + std::string(" is not an array"));
    zr::store_integer(&place<char>(contents, field.count_offset), field.count, static_cast<int32_t>(value.size()));
    if (value.empty()) return;
    auto* element = static_cast<char*>(zeroed(value.size() * field.element_octets()));
    place<char*>(contents, field.offset) = element;
    for (const json& item : value) {
        if (field.kind == field_kind::list_of_texts) place<char*>(element, 0) = copy_text(item.get<std::string>());
        if (field.kind == field_kind::list_of_integers) store_number(element, field.integer, item);
        if (field.kind == field_kind::list_of_records) fill_from_json(*field.nested, element, item);
        if (field.kind == field_kind::list_of_pointers) place<void*>(element, 0) = made(*field.nested, item);
        element += field.element_octets();
    }
}

void fill_field(const field& field, void* contents, const json& value) {
    void* member = &place<char>(contents, field.offset);
    switch (field.kind) {
        case field_kind::integer:
            store_number(member, field.integer, value);
            break;
        case field_kind::text:
            place<char*>(member, 0) = copy_text(value.get<std::string>());
            break;
        case field_kind::octets: {
            const std::vector<unsigned char> octets = bytes(value.get<std::string>());
            place<char*>(member, 0) = copy_text({octets.begin(), octets.end()});
            zr::store_integer(&place<char>(contents, field.count_offset), field.count,
                              static_cast<int32_t>(octets.size()));
            break;
        }
        case field_kind::fixed_octets: {
            const std::vector<unsigned char> octets = bytes(value.get<std::string>());
            require(octets.size() == field.size, "not as many octets as the member has");
            std::memcpy(member, octets.data(), octets.size());
            break;
        }
        case field_kind::nested:
            fill_from_json(*field.nested, member, value);
            break;
        case field_kind::optional_nested:
            if (!value.is_null()) place<void*>(member, 0) = made(*field.nested, value);
            break;
        case field_kind::slots:
            require(value.is_array() && value.size() <= field.size, "more positions than slots");
            for (size_t i = 0; i < value.size(); ++i)
                if (!value[i].is_null()) place<void*>(member, i * sizeof(void*)) = made(*field.nested, value[i]);
            break;
        default:
            fill_list(field, contents, value);
            break;
    }
}

}  // namespace

void fill_from_json(const zr::record_type& type, void* contents, const json& value) {
    require(value.is_object(), type.name + std::string(" is not an object"));
    size_t known = 0;
    for (const field& field : type) {
        const auto found = value.find(field.name);
        if (found == value.end()) {
            require(field.kind == field_kind::optional_nested, type.name + std::string(" lacks ") + field.name);
            continue;
        }
        ++known;
        fill_field(field, contents, *found);
    }
    require(known == value.size(), type.name + std::string(" has a member that it does not know"));
}

}  // namespace zr_test
