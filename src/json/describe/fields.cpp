#include "json/describe/fields.h"

#include <string>
#include <string_view>

#include "json/ber/asn1_types.h"
#include "json/ber/field_words.h"

namespace zr::json {

namespace {

// The kind as one word, such as "list_of_records".
std::string kind_word(const field& field) {
    const std::string value = words_of(field.value).word;
    switch (field.held) {
        case holding::one:
            break;
        case holding::optional:
            return field.value == value_kind::record ? "optional_nested" : "optional_" + value;
        case holding::list:
            return "list_of_" + value + "s";
        case holding::pointer_list:
            return "list_of_pointers";
        case holding::slots:
            return "slots";
    }
    return field.value == value_kind::record ? "nested" : value;
}

// Names are C identifiers: nothing in them needs to be escaped.
void write_member(output& out, const char* key, std::string_view value) {
    out.write(", \"");
    out.write(key);
    out.write("\": \"");
    out.write(value);
    out.put('"');
}

}  // namespace

void write_fields(output& out, const record_type& type) {
    out.write("{\"name\": \"");
    out.write(type.name);
    out.put('"');
    write_member(out, "module", type.module);
    write_member(out, "binding", type.binding);
    out.write(", \"fields\": [");
    for (const field& field : type) {
        if (&field != type.begin()) out.put(',');
        out.write("\n    {\"name\": \"");
        out.write(field.name);
        out.put('"');
        write_member(out, "kind", kind_word(field));
        if (field.value == value_kind::integer) write_member(out, "type", c_integer(field.integer));
        if (field.record != nullptr) write_member(out, "record", field.record->name);
        if (field.size != 0) out.write(", \"size\": " + std::to_string(field.size));
        if (field.count_name != nullptr) {
            write_member(out, "count", field.count_name);
            write_member(out, "count_type", c_integer(field.count));
        }
        if (field.secret) out.write(", \"secret\": true");
        out.put('}');
    }
    out.write("]}");
}

void write_all_fields(output& out) {
    const char* separator = "[\n";
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            out.write(separator);
            separator = ",\n";
            write_fields(out, *type);
        }
    }
    out.write("\n]");
}

}  // namespace zr::json
