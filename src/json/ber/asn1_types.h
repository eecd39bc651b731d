// The words of ASN.1: the universal types (X.680, 8.4), their tags, forms and names, and the classes of tags.
#pragma once

#include <cstdint>
#include <string>

#include "json/base/members.h"

namespace zr::json {

enum universal_tag : unsigned char {
    tag_end_of_contents = 0,
    tag_boolean = 1,
    tag_integer = 2,
    tag_bit_string = 3,
    tag_octet_string = 4,
    tag_null = 5,
    tag_object_identifier = 6,
    tag_enumerated = 10,
    tag_utf8_string = 12,
    tag_relative_oid = 13,
    tag_sequence = 16,
    tag_set = 17,
    tag_universal_string = 28,
    tag_bmp_string = 30,
};

// Which forms X.690 permits a type.
enum class asn1_form : uint8_t { either, primitive, constructed };

// How the contents of a type are to be understood.
enum class asn1_contents : uint8_t { octets, boolean, integer, bits, null, identifier, text, text_of_2, text_of_4 };

struct asn1_type {
    const char* name;  // null for a tag that is not assigned
    asn1_form form;
    asn1_contents contents;
};

const asn1_type& universal_type(uint64_t tag);

// A class of tags: as a word, as a column has it, and as a tag is written ("[APPLICATION ").
struct tag_class {
    const char* name;
    const char* column;
    const char* bracket;
};
// Classes are 0 to 3.
const tag_class& class_of(unsigned number);

// "an INTEGER", "a SEQUENCE".
std::string with_article(const std::string& name);

// What a kind of value is called: as one word of "zrasn records --json", in words of "zrasn
// records", and in the name of a list in a schema. Empty where the field itself says more: integers, fixed octets and
// records.
struct kind_words {
    const char* word;
    const char* in_words;
    const char* in_schema;
};
kind_words words_of(value_kind value);

// The type that a value of the kind has in an encoding. Asked for each element of a walk.
constexpr universal_tag tag_of(value_kind value) {
    switch (value) {
        case value_kind::integer:
        case value_kind::version:
            return tag_integer;
        case value_kind::text:
            return tag_utf8_string;
        case value_kind::stored_text:
        case value_kind::octets:
        case value_kind::fixed_octets:
            return tag_octet_string;
        case value_kind::record:
            break;
    }
    return tag_sequence;
}
// The type of a member, as it is written in ASN.1: "INTEGER", "SEQUENCE OF".
const char* type_of(const field& member);

}  // namespace zr::json
