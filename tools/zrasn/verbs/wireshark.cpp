// wireshark: a dissector in Lua for the envelopes of all records. A table made from the lists of fields comes first;
// the program behind it, wireshark.lua, is the same for any records.
#include <string>

#include "base/file_output.h"
#include "json/ber/asn1_types.h"
#include "verbs/verbs.h"
#include "verbs/wireshark_dissector.h"

namespace zr::tool {

namespace {

const char* held_name(holding held) {
    switch (held) {
        case holding::optional:
            return "optional";
        case holding::list:
        case holding::pointer_list:
            return "list";
        case holding::slots:
            return "slots";
        case holding::one:
            break;
    }
    return "one";
}

// One member as a table of Lua. Names are those of C, which need no quoting.
std::string member_table(const field& field) {
    std::string text = std::string("{ name = \"") + field.name + "\", kind = \"" + words_of(field.value).word +
                       "\", held = \"" + held_name(field.held) + "\"";
    // The octet that its values begin with, in the primitive form where they have one (X.690, 8.1.2).
    text += ", identifier = " + std::to_string(tag_of(field.value) | (field.record != nullptr ? 0x20 : 0));
    if (field.record != nullptr) text += std::string(", record = \"") + field.record->name + "\"";
    if (field.value == value_kind::integer && field.integer.is_signed) text += ", signed = true";
    if (field.value == value_kind::fixed_octets) text += ", size = " + std::to_string(field.size);
    if (field.secret) text += ", secret = true";
    return text + " }";
}

}  // namespace

int run_wireshark() {
    file_output out("");
    out.write(
        "-- A dissector for Wireshark and tshark (3.6 and later), written by \"zrasn wireshark\". It goes into the "
        "folder\n"
        "-- of personal Lua plugins, or behind -X lua_script:FILE.\n\n"
        "local records, order = {}, {}\n");
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            out.write(std::string("table.insert(order, \"") + type->name + "\")\nrecords[\"" + type->name +
                      "\"] = {\n");
            for (const field& field : *type)
                out.write("    " + member_table(field) + ",\n");
            out.write("}\n");
        }
    }
    out.write(wireshark_dissector);
    out.close();
    return exit_good;
}

}  // namespace zr::tool
