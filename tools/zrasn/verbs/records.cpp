// records: the record types and their fields.
#include <string>

#include "base/members.h"
#include "base/output.h"
#include "base/record_holder.h"
#include "ber/asn1_types.h"
#include "ber/field_words.h"
#include "json/example.h"
#include "json/record_reader.h"
#include "json/record_writer.h"
#include "verbs/verbs.h"

namespace zr::tool {

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

void write_padded(output& out, std::string_view text, size_t width) {
    out.write(text);
    for (size_t i = text.size(); i < width; ++i)
        out.put(' ');
}

void write_record(output& out, const record_type& type) {
    out.write(type.name);
    out.write("  (");
    out.write(type.module);
    out.write(")\n");
    for (const field& field : type) {
        out.write("    ");
        write_padded(out, field.name, 28);
        if (field.count_name == nullptr) {
            out.write(kind_in_words(field) + (field.secret ? ", secret" : ""));
        } else {
            write_padded(out, kind_in_words(field), 36);
            out.write("  ");
            out.write(field.count_name);
            out.write(": " + c_integer(field.count));
        }
        out.put('\n');
    }
}

// Names are C identifiers: nothing in them needs to be escaped.
void write_member(output& out, const char* key, std::string_view value) {
    out.write(", \"");
    out.write(key);
    out.write("\": \"");
    out.write(value);
    out.put('"');
}

void write_record_json(output& out, const record_type& type) {
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

void write_example(output& out, const record_type& type) {
    record_holder example(type);
    json_error error;
    if (!read_json(example_json(type), type, example.get(), error)) throw output_error{error.message};
    write_json(out, type, example.get(), json_layout::indented, secret_values::shown);
    out.put('\n');
}

}  // namespace

int run_records(const records_options& options) {
    output out("");
    if (options.example) {
        write_example(out, *options.record);
        out.close();
        return exit_good;
    }
    if (options.record != nullptr) {
        options.json ? write_record_json(out, *options.record) : write_record(out, *options.record);
        if (options.json) out.put('\n');
        out.close();
        return exit_good;
    }
    const char* separator = options.json ? "[\n" : "";
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            out.write(separator);
            separator = options.json ? ",\n" : "\n";
            options.json ? write_record_json(out, *type) : write_record(out, *type);
        }
    }
    if (options.json) out.write("\n]\n");
    out.close();
    return exit_good;
}

}  // namespace zr::tool
