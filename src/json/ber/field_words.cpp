#include "json/ber/field_words.h"

#include "json/ber/asn1_types.h"

namespace zr::json {

std::string c_integer(integer_type type) {
    return (type.is_signed ? "int" : "uint") + std::to_string(8 * type.octets) + "_t";
}

namespace {

// One value in words, such as "sec_id_t".
std::string value_in_words(const field& field) {
    if (field.record != nullptr) return field.record->name;
    if (field.value == value_kind::integer) return c_integer(field.integer);
    if (field.value == value_kind::fixed_octets) return std::to_string(field.size) + " octets";
    return words_of(field.value).in_words;
}

}  // namespace

std::string kind_in_words(const field& field) {
    std::string value = value_in_words(field);
    switch (field.held) {
        case holding::one:
            break;
        case holding::optional:
            return "optional " + value;
        case holding::list:
            return "list of " + value + (field.value == value_kind::text ? "s" : "");
        case holding::pointer_list:
            return "list of pointers to " + value;
        case holding::slots:
            return std::to_string(field.size) + " slots of " + value;
    }
    return value;
}

}  // namespace zr::json
