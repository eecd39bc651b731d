#include "cli/verb_calls.h"

#include <optional>
#include <string_view>

#include <unistd.h>

#include "base/library.h"
#include "cli/pages.h"
#include "json/base/suggest.h"
#include "json/base/text.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

// A record by its name, or the front of it.
const record_type* known_record(const std::string& name) {
    for (const char* ending : {"", "_s_t", "_t"})
        if (const record_type* found = find_record(name + ending)) return found;
    return nullptr;
}

const record_type* record_named(const std::string& name) {
    if (name.empty()) return nullptr;
    if (const record_type* found = known_record(name)) return found;
    throw usage_error{"there is no record " + in_quotes(name) + record_suggestion(name) +
                      " (\"zrasn records\" lists them)"};
}

struct record_and_files {
    const record_type* record;
    std::vector<std::string> files;
};

// The first word is the record, if it names one and --record does not. Where `record_first`, a word that seems to be
// neither a record nor a file is taken for a record's name.
record_and_files inputs_of(const settings& given, bool record_first) {
    record_and_files inputs{record_named(given.record), given.words};
    if (inputs.record == nullptr && !given.words.empty()) {
        const std::string& word = given.words.front();
        inputs.record = known_record(word);
        if (inputs.record != nullptr)
            inputs.files.erase(inputs.files.begin());
        else if (record_first && word.find_first_of("/.-") == word.npos && ::access(word.c_str(), F_OK) != 0)
            record_named(word);
    }
    if (inputs.files.empty()) inputs.files = {"-"};
    return inputs;
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

framing_form framing_named(const std::string& name) {
    using kind = framing_form::kind;
    if (name == "one") return {kind::one};
    if (name == "concatenated") return {kind::concatenated};
    if (name == "auto") return {};
    return {kind::prefixed, static_cast<unsigned>(name[0] - '0'), name.size() > 1};
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

uint64_t number_of(const char* option, const std::string& digits) {
    uint64_t number = 0;
    for (char c : digits) {
        if (c < '0' || c > '9' || digits.size() > 18)
            throw usage_error{std::string(option) + " is a number of up to 18 digits, not " + in_quotes(digits)};
        number = 10 * number + static_cast<unsigned>(c - '0');
    }
    return number;
}

secret_values secrets_of(const settings& given) {
    return given.show_secrets ? secret_values::shown : secret_values::hidden;
}

// What --select and --where ask for of a record.
void ask(const settings& given, selection& asked) {
    const auto take = [&asked](const char* option, bool (selection::*add)(std::string_view, std::string&),
                               std::string_view text) {
        std::string message;
        if (!(asked.*add)(text, message)) throw usage_error{std::string(option) + ": " + message};
    };
    for (std::string_view paths : given.select) {
        for (size_t end = 0; end != paths.npos; paths.remove_prefix(end + 1)) {
            end = paths.find(',');
            take("--select", &selection::select, paths.substr(0, end));
            if (end == paths.npos) break;
        }
    }
    for (const std::string& condition : given.where)
        take("--where", &selection::require, condition);
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
    return run_records({record_named(given.record), given.json, given.example, color_named(given.color)});
}

int schema_verb(const settings& given) {
    schema_options asked;
    for (const std::string& name : given.words) {
        if (const record_module* module = module_named(name)) {
            asked.modules.push_back(module);
            continue;
        }
        const record_type* const type = known_record(name);
        if (type == nullptr) {
            std::vector<std::string_view> others;
            for (const record_module* module : modules())
                others.push_back(module->name);
            throw usage_error{"there is no record or module " + in_quotes(name) + record_suggestion(name, others) +
                              " (\"zrasn records\" lists them)"};
        }
        asked.records.push_back(type);
    }
    asked.json = given.json;
    asked.against = given.against;
    asked.color = color_named(given.color);
    if (asked.json && !asked.against.empty()) throw usage_error{"--json and --against exclude each other"};
    return run_schema(asked);
}

int encode_verb(const settings& given) {
    if (given.hex && given.base64) throw usage_error{"--hex and --base64 exclude each other"};
    if (given.lines && given.base64) throw usage_error{"--lines writes hexadecimal digits: it excludes --base64"};
    const record_and_files inputs = inputs_of(given, true);
    if (inputs.record == nullptr) throw usage_error{"RECORD is missing"};
    return run_encode({inputs.record, inputs.files, given.output, given.hex, given.base64, given.lines,
                       version_named(given.version_byte)});
}

int decode_verb(const settings& given) {
    refuse_lines_from(given);
    const record_and_files inputs = inputs_of(given, true);
    if (given.lines && inputs.record == nullptr) throw usage_error{"--lines needs a RECORD"};
    std::optional<selection> asked;
    if (!given.select.empty() || !given.where.empty()) {
        if (inputs.record == nullptr)
            throw usage_error{std::string(given.where.empty() ? "--select" : "--where") + " needs a RECORD"};
        ask(given, asked.emplace(*inputs.record, secrets_of(given)));
    }
    return run_decode({inputs.record, inputs.files, given.output, form_named(given.from), framing_named(given.framing),
                       given.lines, given.compact, version_named(given.version_byte), color_named(given.color),
                       secrets_of(given), asked ? &*asked : nullptr});
}

int dump_verb(const settings& given) {
    const record_and_files inputs = inputs_of(given, false);
    // JSON is to be read by programs, some of which recurse: 64 levels, unless more are asked for.
    const uint64_t all = given.json ? 64 : SIZE_MAX;
    const uint64_t depth = given.depth.empty() ? all : number_of("--depth", given.depth);
    return run_dump({inputs.record, inputs.files, form_named(given.from), color_named(given.color), secrets_of(given),
                     static_cast<size_t>(depth < SIZE_MAX ? depth : SIZE_MAX), number_of("--offset", given.offset),
                     given.json, given.whole});
}

int check_verb(const settings& given) {
    refuse_lines_from(given);
    const record_and_files inputs = inputs_of(given, false);
    return run_check({inputs.record, inputs.files, form_named(given.from), framing_named(given.framing), given.lines,
                      given.quiet, given.all, version_named(given.version_byte), color_named(given.color),
                      secrets_of(given)});
}

int roundtrip_verb(const settings& given) {
    refuse_lines_from(given);
    const record_and_files inputs = inputs_of(given, false);
    return run_roundtrip({inputs.record, inputs.files, form_named(given.from), framing_named(given.framing),
                          given.lines, given.json, version_named(given.version_byte), color_named(given.color)});
}

int sample_verb(const settings& given) {
    if (given.record.empty()) throw usage_error{"RECORD is missing"};
    if (given.hex + given.base64 + given.octets > 1)
        throw usage_error{"--octets, --hex and --base64 exclude each other"};
    using form = sample_options::form;
    const uint64_t seed = number_of("--seed", given.seed);
    return run_sample({record_named(given.record), given.output, seed, given.filled, given.compact,
                       given.octets   ? form::octets
                       : given.hex    ? form::hex
                       : given.base64 ? form::base64
                                      : form::json,
                       version_named(given.version_byte), color_named(given.color)});
}

int canon_verb(const settings& given) {
    if (given.hex && given.base64) throw usage_error{"--hex and --base64 exclude each other"};
    const record_and_files inputs = inputs_of(given, true);
    return run_canon({inputs.record, inputs.files, given.output, form_named(given.from), framing_named(given.framing),
                      given.hex, given.base64, version_named(given.version_byte), color_named(given.color)});
}

int diff_verb(const settings& given) {
    const record_and_files inputs = inputs_of(given, false);
    if (inputs.files.size() != 2) throw usage_error{"diff compares two files"};
    return run_diff({inputs.record, inputs.files[0], inputs.files[1], form_named(given.from), given.all,
                     version_named(given.version_byte), color_named(given.color), secrets_of(given)});
}

int find_verb(const settings& given) {
    return run_find({given.words.empty() ? std::vector<std::string>{"-"} : given.words, given.extract, given.json,
                     version_named(given.version_byte), color_named(given.color)});
}

int wireshark_verb(const settings&) { return run_wireshark(); }
int completion_verb(const settings& given) { return print_completion(given.record); }
int manual_verb(const settings&) { return print_manual(); }

}  // namespace zr::tool
