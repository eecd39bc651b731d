// records: the record types and their fields.
#include <string>

#include "base/file_output.h"
#include "base/library.h"
#include "json/base/members.h"
#include "json/base/record_holder.h"
#include "json/ber/asn1_types.h"
#include "json/ber/field_words.h"
#include "json/ber/record_match.h"
#include "json/describe/fields.h"
#include "json/describe/sample.h"
#include "json/document/record_reader.h"
#include "json/document/record_writer.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

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

}  // namespace

int run_records(const records_options& options) {
    file_output out("");
    if (options.example || options.json) out.paint_json(options.color);
    if (options.example) {
        write_sample(out, *options.record, 0, true, json_layout::indented);
    } else if (options.json) {
        options.record != nullptr ? write_fields(out, *options.record) : write_all_fields(out);
    } else if (options.record != nullptr) {
        write_record(out, *options.record);
    } else {
        for (const record_type* type : known_records()) {
            write_padded(out, type->name, 32);
            out.write(std::string(type->module) + "\n");
        }
    }
    if (options.example || options.json) out.put('\n');
    out.close();
    return exit_good;
}

}  // namespace zr::tool
