#include "cli/verb_calls.h"

#include <string_view>

#include "base/library.h"
#include "cli/pages.h"
#include "json/base/suggest.h"
#include "json/base/text.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

const record_type* record_named(const std::string& name) {
    if (name.empty()) return nullptr;
    const record_type* found = find_record(name);
    if (found == nullptr) found = find_record(name + "_s_t");
    if (found != nullptr) return found;
    throw usage_error{"there is no record " + in_quotes(name) + record_suggestion(name) +
                      " (\"zrasn records\" lists them)"};
}

const record_module* module_named(std::string_view name) {
    for (const record_module* module : modules())
        if (name == module->name) return module;
    return nullptr;
}

input_form form_named(const std::string& name) {
    if (name == "raw") return input_form::raw;
    if (name == "hex") return input_form::hex;
    if (name == "dump") return input_form::dump;
    return name == "base64" ? input_form::base64 : input_form::automatic;
}

color_mode color_named(const std::string& name) {
    if (name == "always") return color_mode::always;
    return name == "never" ? color_mode::never : color_mode::automatic;
}

unsigned version_named(const std::string& digits) {
    unsigned version = 0;
    for (char c : digits) {
        version = c >= '0' && c <= '9' && version <= 255 ? version * 10 + static_cast<unsigned>(c - '0') : 256;
    }
    if (digits.empty() || version > 255)
        throw usage_error{"--version-byte is a number from 0 to 255, not " + in_quotes(digits)};
    return version;
}

secret_values secrets_of(const settings& given) {
    return given.show_secrets ? secret_values::shown : secret_values::hidden;
}

// A line is hexadecimal digits or base64.
void refuse_lines_from(const settings& given) {
    if (!given.lines) return;
    if (given.from == "raw") throw usage_error{"--lines reads text: it excludes --from raw"};
    if (given.from == "dump") throw usage_error{"--lines reads a record a line: it excludes --from dump"};
}

}  // namespace

int records_verb(const settings& given) {
    if (given.example && given.record.empty()) throw usage_error{"--example needs a RECORD"};
    return run_records({record_named(given.record), given.json, given.example});
}

int schema_verb(const settings& given) {
    schema_options asked;
    for (const std::string& name : given.names) {
        if (const record_module* module = module_named(name)) {
            asked.modules.push_back(module);
            continue;
        }
        const record_type* type = find_record(name);
        if (type == nullptr) type = find_record(name + "_s_t");
        if (type == nullptr) {
            std::vector<std::string_view> others;
            for (const record_module* module : modules())
                others.push_back(module->name);
            throw usage_error{"there is no record or module " + in_quotes(name) + record_suggestion(name, others) +
                              " (\"zrasn records\" lists them)"};
        }
        asked.records.push_back(type);
    }
    return run_schema(asked);
}

int encode_verb(const settings& given) {
    if (given.hex && given.base64) throw usage_error{"--hex and --base64 exclude each other"};
    if (given.lines && given.base64) throw usage_error{"--lines writes hexadecimal digits: it excludes --base64"};
    return run_encode({record_named(given.record), given.file, given.output, given.hex, given.base64, given.lines,
                       version_named(given.version_byte)});
}

int decode_verb(const settings& given) {
    refuse_lines_from(given);
    return run_decode({record_named(given.record), given.file, given.output, form_named(given.from), given.lines,
                       given.compact, version_named(given.version_byte), color_named(given.color), secrets_of(given)});
}

int dump_verb(const settings& given) {
    return run_dump(
        {record_named(given.record), given.file, form_named(given.from), color_named(given.color), secrets_of(given)});
}

int check_verb(const settings& given) {
    return run_check({record_named(given.record), given.file, form_named(given.from), version_named(given.version_byte),
                      color_named(given.color), secrets_of(given)});
}

int roundtrip_verb(const settings& given) {
    refuse_lines_from(given);
    if (!given.lines && given.record.empty()) throw usage_error{"roundtrip needs --record RECORD, or --lines"};
    return run_roundtrip({record_named(given.record), given.file, form_named(given.from), given.lines, given.json,
                          version_named(given.version_byte)});
}

int wireshark_verb(const settings&) { return run_wireshark(); }
int completion_verb(const settings& given) { return print_completion(given.shell); }
int manual_verb(const settings&) { return print_manual(); }

}  // namespace zr::tool
