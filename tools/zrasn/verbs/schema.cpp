// schema: the records as an ASN.1 module (X.680) for other compilers.
//
// Everything asked for, and what that contains, goes into one module: asn1c and Erlang's compiler want imported modules
// in files of their own.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "base/output.h"
#include "verbs/verbs.h"

namespace zr::tool {

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

const char* integer_notation(integer_type type) {
    switch (type.octets) {
        case 1:
            return type.is_signed ? "INTEGER (-128..127)" : "INTEGER (0..255)";
        case 2:
            return type.is_signed ? "INTEGER (-32768..32767)" : "INTEGER (0..65535)";
        default:
            return "INTEGER (-2147483648..2147483647)";
    }
}

// One that goes out as a negative number when it is large.
bool is_unsigned_long(const field& field) {
    return (field.kind == field_kind::integer || field.kind == field_kind::list_of_integers) &&
           !field.integer.is_signed && field.integer.octets == 4;
}

// Lists and slots have types of their own: asn1c gives those without a name the member's, and many members have the
// same.
std::string list_reference(const field& field) {
    switch (field.kind) {
        case field_kind::list_of_texts:
            return "Text-list";
        case field_kind::list_of_integers:
            return (field.integer.is_signed ? "Int" : "Uint") + std::to_string(8 * field.integer.octets) + "-list";
        case field_kind::slots:
            return reference(field.nested->name) + "-slots-" + std::to_string(field.size);
        case field_kind::list_of_records:
        case field_kind::list_of_pointers:
            return reference(field.nested->name) + "-list";
        default:
            return "";
    }
}

std::string list_definition(const field& field) {
    switch (field.kind) {
        case field_kind::list_of_texts:
            return "SEQUENCE OF UTF8String";
        case field_kind::list_of_integers:
            return std::string("SEQUENCE OF ") + integer_notation(field.integer);
        case field_kind::slots:
            return "SEQUENCE (SIZE (0.." + std::to_string(field.size) + ")) OF " + reference(field.nested->name) +
                   "-slot";
        default:
            return "SEQUENCE OF " + reference(field.nested->name);
    }
}

std::string notation(const field& field) {
    switch (field.kind) {
        case field_kind::integer:
            return integer_notation(field.integer);
        case field_kind::text:
            return "UTF8String";
        case field_kind::octets:
            return "OCTET STRING";
        case field_kind::fixed_octets:
            return "OCTET STRING (SIZE (" + std::to_string(field.size) + "))";
        case field_kind::nested:
            return reference(field.nested->name);
        case field_kind::optional_nested:
            return reference(field.nested->name) + " OPTIONAL";
        default:
            return list_reference(field);
    }
}

// Records in the order in which they are written: each behind those it contains.
class collection {
public:
    void add(const record_type* type) {
        if (!mark(type)) return;
        for (const field& field : *type)
            if (field.nested != nullptr) add(field.nested);
        records_.push_back(type);
    }
    const std::vector<const record_type*>& records() const { return records_; }

private:
    bool mark(const record_type* type) {
        if (std::find(marked_.begin(), marked_.end(), type) != marked_.end()) return false;
        marked_.push_back(type);
        return true;
    }

    std::vector<const record_type*> marked_;
    std::vector<const record_type*> records_;
};

// The types of the record's lists, each written once.
void write_lists(output& out, const record_type& type, std::vector<std::string>& written) {
    const auto once = [&](const std::string& name, const std::string& definition) {
        if (std::find(written.begin(), written.end(), name) != written.end()) return;
        written.push_back(name);
        out.write(name + " ::= " + definition + "\n\n");
    };
    for (const field& field : type) {
        if (field.kind == field_kind::slots)
            once(reference(field.nested->name) + "-slot",
                 "CHOICE {\n    empty NULL,\n    value " + reference(field.nested->name) + "\n}");
        const std::string list = list_reference(field);
        if (!list.empty()) once(list, list_definition(field));
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

int run_schema(const schema_options& options) {
    collection all;
    std::string name = "Zrasn";
    if (options.modules.size() == 1 && options.records.empty()) name = reference(options.modules[0]->name);
    if (options.records.size() == 1 && options.modules.empty()) name = reference(options.records[0]->name) + "-module";
    for (const record_module* module : options.modules)
        for (const record_type* type : *module)
            all.add(type);
    for (const record_type* type : options.records)
        all.add(type);
    if (options.modules.empty() && options.records.empty()) {
        for (const record_module* module : modules())
            for (const record_type* type : *module)
                all.add(type);
    }
    output out("");
    out.write("-- To be saved as " + name + ".asn1. The encoding is BER, without the envelope's header.\n");
    out.write(name + " DEFINITIONS EXPLICIT TAGS ::= BEGIN\n\n");
    std::vector<std::string> written;
    for (const record_type* type : all.records())
        write_record(out, *type, written);
    out.write("END\n");
    out.close();
    return exit_good;
}

}  // namespace zr::tool
