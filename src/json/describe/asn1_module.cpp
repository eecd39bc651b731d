#include "json/describe/asn1_module.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "json/base/members.h"
#include "json/ber/asn1_types.h"
#include "json/describe/record_collection.h"

namespace zr::json {

namespace {

// Identifiers have single hyphens for underscores, and none at the end.
std::string hyphenated(const char* name) {
    std::string text;
    for (; *name != 0; ++name) {
        if (*name != '_')
            text += *name;
        else if (!text.empty() && text.back() != '-')
            text += '-';
    }
    while (!text.empty() && text.back() == '-')
        text.pop_back();
    return text;
}

std::string identifier(const char* member) {
    std::string text = hyphenated(member);
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    return text;
}

// Reserved words consist of upper-case letters, so a type's or module's name does not.
std::string reference(const char* name) {
    std::string text = hyphenated(name);
    text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    if (std::none_of(text.begin(), text.end(), [](unsigned char c) { return std::islower(c); })) text += "-t";
    return text;
}

// The ASN.1 type of one value.
std::string value_notation(const field& field) {
    if (field.record != nullptr) return reference(field.record->name);
    std::string name = universal_type(tag_of(field.value)).name;
    if (field.value == value_kind::integer) {
        // A uint32_t goes out as the signed number of the same bits.
        const integer_range range =
            range_of({field.integer.octets, field.integer.is_signed || field.integer.octets == 4});
        name += " (" + std::to_string(range.least) + ".." + std::to_string(range.most) + ")";
    } else if (field.value == value_kind::fixed_octets) {
        name += " (SIZE (" + std::to_string(field.size) + "))";
    }
    return name;
}

// One that goes out as a negative number when it is large.
bool is_unsigned_long(const field& field) {
    return field.value == value_kind::integer && !field.integer.is_signed && field.integer.octets == 4;
}

// Lists and slots have types of their own: asn1c gives those without a name the member's, and many members have the
// same.
std::string list_reference(const field& field) {
    std::string value = words_of(field.value).in_schema;
    if (field.record != nullptr) value = reference(field.record->name);
    if (field.value == value_kind::integer)
        value = (field.integer.is_signed ? "Int" : "Uint") + std::to_string(8 * field.integer.octets);
    return value + (field.held == holding::slots ? "-slots-" + std::to_string(field.size) : "-list");
}

std::string list_definition(const field& field) {
    const std::string value = value_notation(field);
    if (field.held != holding::slots) return "SEQUENCE OF " + value;
    return "SEQUENCE (SIZE (0.." + std::to_string(field.size) + ")) OF " + value + "-slot";
}

std::string notation(const field& field) {
    if (is_sequence_of(field)) return list_reference(field);
    return value_notation(field) + (field.held == holding::optional ? " OPTIONAL" : "");
}

// The types of the record's lists, each written once.
void write_lists(output& out, const record_type& type, std::vector<std::string>& written) {
    const auto once = [&](const std::string& name, const std::string& definition) {
        if (std::find(written.begin(), written.end(), name) != written.end()) return;
        written.push_back(name);
        out.write(name + " ::= " + definition + "\n\n");
    };
    for (const field& field : type) {
        if (!is_sequence_of(field)) continue;
        if (field.held == holding::slots)
            once(value_notation(field) + "-slot",
                 "CHOICE {\n    empty NULL,\n    value " + value_notation(field) + "\n}");
        once(list_reference(field), list_definition(field));
    }
}

void write_record(output& out, const record_type& type, std::vector<std::string>& written) {
    write_lists(out, type, written);
    out.write("-- " + std::string(type.name) + " (" + type.module + ")\n");
    out.write(reference(type.name) + " ::= SEQUENCE {\n");
    for (const field& field : type) {
        const bool last = &field + 1 == type.end();
        out.write("    " + identifier(field.name) + " " + notation(field) + (last ? "" : ","));
        if (is_unsigned_long(field)) out.write(" -- uint32_t, as the signed number of the same bits");
        out.put('\n');
    }
    out.write("}\n\n");
}

}  // namespace

void write_asn1_module(output& out, const std::vector<const record_module*>& of_modules,
                       const std::vector<const record_type*>& of_records) {
    std::string name = "Zrasn";
    if (of_modules.size() == 1 && of_records.empty()) name = reference(of_modules[0]->name);
    if (of_records.size() == 1 && of_modules.empty()) name = reference(of_records[0]->name) + "-module";
    const record_collection all(of_modules, of_records);
    out.write("-- To be saved as " + name + ".asn1. The encoding is BER, without the envelope's header.\n");
    out.write(name + " DEFINITIONS EXPLICIT TAGS ::= BEGIN\n\n");
    std::vector<std::string> written;
    for (const record_type* type : all)
        write_record(out, *type, written);
    out.write("END\n");
}

}  // namespace zr::json
