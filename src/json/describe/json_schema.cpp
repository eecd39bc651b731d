#include "json/describe/json_schema.h"

#include <string>

#include "json/base/members.h"
#include "json/describe/record_collection.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

// What members of many records are. Their names have a hyphen, which no record's name has.
constexpr char common[] =
    R"("utf8-text":{"anyOf":[{"type":"string","pattern":"^[^\\u0000]*$"},)"
    R"({"type":"object","properties":{"hex":{"type":"string","pattern":"^((?!00)[0-9A-Fa-f]{2})*$"}},)"
    R"("required":["hex"],"additionalProperties":false}]},)"
    "\n"
    R"("hex-octets":{"type":"string","pattern":"^([0-9A-Fa-f]{2})*$"})";

std::string reference(const char* name) { return "\"$ref\":\"#/$defs/" + std::string(name) + "\""; }

// The keywords of one value.
std::string keywords(const field& field) {
    switch (field.value) {
        case value_kind::integer: {
            const integer_range range = range_of(field.integer);
            return "\"type\":\"integer\",\"minimum\":" + std::to_string(range.least) +
                   ",\"maximum\":" + std::to_string(range.most);
        }
        case value_kind::text:
        case value_kind::stored_text:
            return reference("utf8-text");
        case value_kind::octets:
            return reference("hex-octets");
        case value_kind::fixed_octets:
            return R"("type":"string","pattern":"^[0-9A-Fa-f]*$","minLength":)" + std::to_string(2 * field.size) +
                   ",\"maxLength\":" + std::to_string(2 * field.size);
        case value_kind::record:
            return reference(field.record->name);
        case value_kind::version:
            break;
    }
    return {};
}

std::string value_schema(const field& field) {
    const bool or_null = field.held == holding::optional || field.held == holding::slots;
    const std::string one = keywords(field) + (field.secret ? R"(,"not":{"const":"***"})" : "");
    return or_null ? "{\"anyOf\":[{" + one + R"(},{"type":"null"}]})" : "{" + one + "}";
}

std::string member_schema(const field& field) {
    if (!is_sequence_of(field)) return value_schema(field);
    return "{\"type\":\"array\",\"items\":" + value_schema(field) +
           ",\"maxItems\":" + std::to_string(most_places(field)) + "}";
}

void write_record(output& out, const record_type& type) {
    out.write(",\n\"" + std::string(type.name) + "\":");
    if (is_uuid(type))
        return out.write(R"({"type":"string","pattern":"^[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}$"})");
    const char* separator = "";
    out.write("{\"type\":\"object\",\"additionalProperties\":false,\"properties\":{");
    for (const field& field : type) {
        if (!has_member(field.value)) continue;
        out.write(separator + ("\"" + std::string(field.name) + "\":") + member_schema(field));
        separator = ",\n  ";
    }
    out.write("}}");
}

}  // namespace

void write_json_schema(output& out, const std::vector<const record_type*>& of_records) {
    const record_collection all({}, of_records);
    out.write("{\"$schema\":\"https://json-schema.org/draft/2020-12/schema\",\n");
    if (of_records.size() == 1) {
        out.write("\"title\":\"" + std::string(of_records.front()->name) + "\",\n" +
                  reference(of_records.front()->name));
    } else {
        const char* separator = "\"anyOf\":[";
        for (const record_type* type : all) {
            out.write(separator + ("{" + reference(type->name) + "}"));
            separator = ",";
        }
        out.put(']');
    }
    out.write(",\n\"$defs\":{\n");
    out.write(common);
    for (const record_type* type : all)
        write_record(out, *type);
    out.write("}}\n");
}

}  // namespace zr::json
