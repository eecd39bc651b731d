// What a field is, in words.
#pragma once

#include <string>

#include "asn1/record/field.h"

namespace zr::json {

// Such as "uint16_t".
std::string c_integer(integer_type type);

// The kind in words that stand behind the name, such as "list of sec_id_t".
std::string kind_in_words(const field& field);

}  // namespace zr::json
