#include "options.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include <CLI/CLI.hpp>

#include "suggest.h"
#include "text.h"
#include "verbs.h"

namespace zr::tool {

namespace {

enum verb_bit : unsigned { on_records = 1, on_schema = 2, on_encode = 4, on_decode = 8, on_dump = 16, on_check = 32 };

// A name on the command line that means nothing.
struct usage_error {
    std::string message;
};

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

int records_verb(const settings& given) { return run_records({record_named(given.record), given.json}); }

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
    if (given.lines && given.from == "raw") throw usage_error{"--lines reads text: it excludes --from raw"};
    return run_decode({record_named(given.record), given.file, given.output, form_named(given.from), given.lines,
                       given.compact, color_named(given.color)});
}

int dump_verb(const settings& given) {
    return run_dump({record_named(given.record), given.file, form_named(given.from), color_named(given.color)});
}

int check_verb(const settings& given) {
    return run_check({record_named(given.record), given.file, form_named(given.from), color_named(given.color)});
}

int completion_verb(const settings& given) { return print_completion(given.shell); }
int manual_verb(const settings&) { return print_manual(); }

// Says what is wrong, with the option or verb that may have been meant.
int report_usage(const verb_row* verb, const std::string& message) {
    std::fprintf(stderr, "zrasn: %s\nTry \"zrasn%s%s --help\".\n", message.c_str(), verb == nullptr ? "" : " ",
                 verb == nullptr ? "" : verb->name);
    return exit_usage;
}

// The first option on the command line whose value is missing.
std::string missing_value(const verb_row* verb, int argc, char** argv) {
    for (int i = 1; verb != nullptr && i < argc; ++i) {
        for (const option_row& option : options()) {
            if ((option.verbs & verb->bit) == 0 || option.value == nullptr) continue;
            const std::string_view given = argv[i];
            const bool named = given == option.name || (option.letter != nullptr && given == option.letter);
            const bool empty = given == std::string(option.name) + "=";
            if (empty || (named && (i + 1 == argc || (argv[i + 1][0] == '-' && argv[i + 1][1] != 0))))
                return std::string(option.name) +
                       " needs a value: " + (option.choices != nullptr ? option.choices : option.value);
        }
    }
    return {};
}

// The first option on the command line that the verb does not have.
std::string unknown_option(const verb_row* verb, int argc, char** argv) {
    std::vector<std::string_view> known = {"--help", "-h", "--version"};
    for (const option_row& option : options()) {
        if (verb == nullptr || (option.verbs & verb->bit) == 0) continue;
        known.push_back(option.name);
        if (option.letter != nullptr) known.push_back(option.letter);
    }
    for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
        std::string_view given = argv[i];
        if (given.size() < 2 || given[0] != '-') continue;
        if (given[1] == '-')
            given = given.substr(0, given.find('='));
        else
            given = given.substr(0, 2);
        bool found = false;
        for (std::string_view name : known)
            found = found || name == given;
        if (found) continue;
        return (verb == nullptr ? std::string("unknown option ") : std::string(verb->name) + " has no option ") +
               printable(given.substr(0, 40)) + suggestion(given, known);
    }
    return {};
}

CLI::Validator one_of(const char* choices) {
    return CLI::Validator(
        [choices](const std::string& value) {
            const std::string all = "|" + std::string(choices) + "|";
            return all.find("|" + value + "|") != all.npos && value.find('|') == value.npos
                       ? std::string()
                       : in_quotes(value) + " is none of " + choices;
        },
        "");
}

void add_positional(CLI::App& app, positional argument, settings& given) {
    switch (argument) {
        case positional::none:
            return;
        case positional::record:
            app.add_option("RECORD", given.record, "record type, such as acl_ext_s_t (_s_t may be left out)")
                ->required();
            return;
        case positional::optional_record:
            app.add_option("RECORD", given.record, "record type");
            return;
        case positional::names:
            app.add_option("NAME", given.names, "record type or module, such as aclidl_asn; all when there is none");
            return;
        case positional::file:
            app.add_option("FILE", given.file, "file; standard input when it is - or left out");
            return;
        case positional::shell:
            app.add_option("SHELL", given.shell, "bash, zsh or fish")->required()->check(one_of("bash|zsh|fish"));
            return;
    }
}

void add_option(CLI::App& app, const option_row& option, settings& given) {
    const std::string names = option.letter == nullptr ? option.name : std::string(option.letter) + "," + option.name;
    if (option.flag != nullptr) {
        app.add_flag(names, given.*option.flag, option.help);
        return;
    }
    CLI::Option* added = app.add_option(names, given.*option.text, option.help);
    added->type_name(option.choices != nullptr ? option.choices : option.value);
    added->take_last();
    if (option.choices != nullptr) added->check(one_of(option.choices));
}

// What keeps the command line from being read.
std::string parse_message(const CLI::App& app, const CLI::ParseError& error, const verb_row* verb, int argc,
                          char** argv) {
    std::string message = unknown_option(verb, argc, argv);
    if (message.empty()) message = missing_value(verb, argc, argv);
    if (!message.empty()) return message;
    if (dynamic_cast<const CLI::ValidationError*>(&error) != nullptr) return printable(error.what());  // one_of's text
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return verb == nullptr ? "a verb is missing" : std::string(positional_name(verb->first)) + " is missing";
    for (const std::string& left : app.remaining(true))
        return "there is an argument too many: " + in_quotes(left);
    return "the command line cannot be understood";
}

const verb_row* verb_named(std::string_view name) {
    for (const verb_row& verb : verbs())
        if (name == verb.name) return &verb;
    return nullptr;
}

}  // namespace

const std::vector<verb_row>& verbs() {
    static const std::vector<verb_row> rows = {
        {"records", on_records, "show the record types: name, module, fields with their kinds",
         positional::optional_record, positional::none, "zrasn records acl_ext_s_t", false, records_verb},
        {"schema", on_schema, "print ASN.1 modules that other ASN.1 compilers accept", positional::names,
         positional::none, "zrasn schema aclidl_asn > Aclidl-asn.asn1", false, schema_verb},
        {"encode", on_encode, "turn JSON into the octets of an envelope", positional::record, positional::file,
         "zrasn encode acl_ext_s_t acl.json -o acl.ber", false, encode_verb},
        {"decode", on_decode, "turn the octets of an envelope into JSON", positional::record, positional::file,
         "zrasn decode acl_ext_s_t acl.ber", false, decode_verb},
        {"dump", on_dump, "show any BER as a tree", positional::file, positional::none,
         "zrasn dump --record acl_ext_s_t acl.ber", false, dump_verb},
        {"check", on_check, "say whether an encoding fits a record and where it deviates from what the library writes",
         positional::file, positional::none, "zrasn check acl.ber", false, check_verb},
        {"completion", 0, "print the completion script for a shell", positional::shell, positional::none,
         "zrasn completion bash > /etc/bash_completion.d/zrasn", true, completion_verb},
        {"manual", 0, "print the manual page", positional::none, positional::none, "zrasn manual | man -l -", true,
         manual_verb},
    };
    return rows;
}

const std::vector<option_row>& options() {
    static const std::vector<option_row> rows = {
        {"--json", nullptr, nullptr, nullptr, "as JSON", on_records, &settings::json, nullptr},
        {"--record", nullptr, "RECORD", nullptr, "the record type that the octets are to be", on_dump | on_check,
         nullptr, &settings::record},
        {"--from", nullptr, "FORM", "auto|raw|hex|base64", "form of the input, instead of recognising it",
         on_decode | on_dump | on_check, nullptr, &settings::from},
        {"--hex", nullptr, nullptr, nullptr, "write hexadecimal digits (as on a terminal)", on_encode, &settings::hex,
         nullptr},
        {"--base64", nullptr, nullptr, nullptr, "write base64", on_encode, &settings::base64, nullptr},
        {"--version-byte", nullptr, "N", nullptr,
         "version in the envelope header, 0 to 255; others than 2 are refused "
         "by decoders",
         on_encode, nullptr, &settings::version_byte},
        {"--lines", nullptr, nullptr, nullptr, "one record a line: JSON on one side, hexadecimal digits on the other",
         on_encode | on_decode, &settings::lines, nullptr},
        {"--compact", nullptr, nullptr, nullptr, "write JSON on one line", on_decode, &settings::compact, nullptr},
        {"--output", "-o", "FILE", nullptr, "write to the file instead of standard output", on_encode | on_decode,
         nullptr, &settings::output},
        {"--color", nullptr, "WHEN", "auto|always|never",
         "colours; auto means on a terminal, unless NO_COLOR is set or TERM is dumb", on_decode | on_dump | on_check,
         nullptr, &settings::color},
    };
    return rows;
}

value_kind value_kind_of(const option_row& option) {
    if (option.choices != nullptr) return value_kind::choices;
    if (option.value == nullptr) return value_kind::other;
    if (std::strcmp(option.value, "RECORD") == 0) return value_kind::record;
    return std::strcmp(option.value, "FILE") == 0 ? value_kind::file : value_kind::other;
}

const char* positional_name(positional argument) {
    switch (argument) {
        case positional::record:
            return "RECORD";
        case positional::optional_record:
            return "[RECORD]";
        case positional::names:
            return "[RECORD|MODULE ...]";
        case positional::file:
            return "[FILE]";
        case positional::shell:
            return "bash|zsh|fish";
        case positional::none:
            break;
    }
    return "";
}

const char* program_version() { return ZRASN_VERSION; }

int run_command_line(int argc, char** argv) {
    CLI::App app("Looks into encodings of authorization and policy records; turns records into JSON and back.",
                 "zrasn");
    app.set_version_flag("--version", std::string("zrasn ") + program_version());
    app.require_subcommand(1);
    settings given;
    for (const verb_row& verb : verbs()) {
        CLI::App* sub = app.add_subcommand(verb.name, verb.summary);
        if (verb.hidden) sub->group("");
        add_positional(*sub, verb.first, given);
        add_positional(*sub, verb.second, given);
        for (const option_row& option : options())
            if ((option.verbs & verb.bit) != 0) add_option(*sub, option, given);
        sub->footer(std::string("Example:\n  ") + verb.example);
    }
    app.footer(
        "Exit codes: 0 good, 1 data refused or not all used, 2 usage, 3 input or output.\n\nExample:\n  zrasn decode "
        "acl_ext_s_t "
        "acl.ber");

    const verb_row* verb = nullptr;
    if (argc < 2) {
        std::fputs(app.help().c_str(), stderr);
        return exit_usage;
    }
    if (argv[1][0] != '-') {
        verb = verb_named(argv[1]);
        std::vector<std::string_view> names;
        for (const verb_row& known : verbs())
            if (!known.hidden) names.push_back(known.name);
        if (verb == nullptr)
            return report_usage(nullptr, "there is no verb " + in_quotes(argv[1]) + suggestion(argv[1], names));
    }
    try {
        app.parse(argc, argv);
        return verb_named(app.get_subcommands().front()->get_name())->run(given);
    } catch (const CLI::Success& asked) {  // --help, --version
        return app.exit(asked) == 0 ? exit_good : exit_usage;
    } catch (const CLI::ParseError& error) {
        return report_usage(verb, parse_message(app, error, verb, argc, argv));
    } catch (const usage_error& error) {
        return report_usage(verb, error.message);
    }
}

}  // namespace zr::tool
