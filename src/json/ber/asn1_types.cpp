#include "json/ber/asn1_types.h"

#include <cstring>

namespace zr::json {

namespace {

using form = asn1_form;
using contents = asn1_contents;

// By tag.
constexpr asn1_type types[] = {
    {"end-of-contents", form::primitive, contents::octets},
    {"BOOLEAN", form::primitive, contents::boolean},
    {"INTEGER", form::primitive, contents::integer},
    {"BIT STRING", form::either, contents::bits},
    {"OCTET STRING", form::either, contents::octets},
    {"NULL", form::primitive, contents::null},
    {"OBJECT IDENTIFIER", form::primitive, contents::identifier},
    {"ObjectDescriptor", form::either, contents::text},
    {"EXTERNAL", form::constructed, contents::octets},
    {"REAL", form::primitive, contents::octets},
    {"ENUMERATED", form::primitive, contents::integer},
    {"EMBEDDED PDV", form::constructed, contents::octets},
    {"UTF8String", form::either, contents::text},
    {"RELATIVE-OID", form::primitive, contents::identifier},
    {"TIME", form::either, contents::text},
    {nullptr, form::either, contents::octets},
    {"SEQUENCE", form::constructed, contents::octets},
    {"SET", form::constructed, contents::octets},
    {"NumericString", form::either, contents::text},
    {"PrintableString", form::either, contents::text},
    {"TeletexString", form::either, contents::text},
    {"VideotexString", form::either, contents::text},
    {"IA5String", form::either, contents::text},
    {"UTCTime", form::either, contents::text},
    {"GeneralizedTime", form::either, contents::text},
    {"GraphicString", form::either, contents::text},
    {"VisibleString", form::either, contents::text},
    {"GeneralString", form::either, contents::text},
    {"UniversalString", form::either, contents::text_of_4},
    {"CHARACTER STRING", form::constructed, contents::octets},
    {"BMPString", form::either, contents::text_of_2},
    {"DATE", form::either, contents::text},
    {"TIME-OF-DAY", form::either, contents::text},
    {"DATE-TIME", form::either, contents::text},
    {"DURATION", form::either, contents::text},
    {"OID-IRI", form::either, contents::text},
    {"RELATIVE-OID-IRI", form::either, contents::text},
};

}  // namespace

const asn1_type& universal_type(uint64_t tag) {
    static constexpr asn1_type unknown = {nullptr, form::either, contents::octets};
    return tag < sizeof(types) / sizeof(*types) ? types[tag] : unknown;
}

const tag_class& class_of(unsigned number) {
    static constexpr tag_class classes[] = {{"universal", "univ", "[UNIVERSAL "},
                                            {"application", "appl", "[APPLICATION "},
                                            {"context-specific", "cont", "["},
                                            {"private", "priv", "[PRIVATE "}};
    return classes[number];
}

std::string with_article(const std::string& name) {
    const bool vowel = std::strchr("AEIOaeio", name[0]) != nullptr;  // UTF8String begins with a consonant
    return (vowel ? "an " : "a ") + name;
}

kind_words words_of(value_kind value) {
    switch (value) {
        case value_kind::integer:
            return {"integer", "", ""};
        case value_kind::version:
            return {"version", "INTEGER 1, no member", "Version"};
        case value_kind::text:
            return {"text", "text", "Text"};
        case value_kind::stored_text:
            return {"stored_text", "text, stored with its zero octet", "Octets"};
        case value_kind::octets:
            return {"octets", "octets", "Octets"};
        case value_kind::fixed_octets:
            return {"fixed_octets", "", "Octets"};
        case value_kind::record:
            break;
    }
    return {"record", "", ""};
}

const char* type_of(const field& member) {
    return is_sequence_of(member) ? "SEQUENCE OF" : universal_type(tag_of(member.value)).name;
}

}  // namespace zr::json
