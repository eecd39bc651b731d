#include "cli/command_line.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "base/exit_code.h"
#include "base/library.h"
#include "cli/options.h"
#include "cli/verb_calls.h"
#include "json/base/suggest.h"
#include "json/base/text.h"

namespace zr::tool {

namespace {

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

// What a verb takes without an option's name. A record before files is one of the words: which it is shows later.
void add_positionals(CLI::App& app, const verb_row& verb, settings& given) {
    if (verb.second == positional::files) {
        app.add_option(verb.first == positional::none ? "FILE" : "RECORD|FILE", given.words,
                       verb.first == positional::none
                           ? "files; standard input when there is none, or for -"
                           : "record type, such as acl_ext_s_t (_s_t may be left out), if the first one names one, and "
                             "files; standard input when there is none, or for -");
        return;
    }
    switch (verb.first) {
        case positional::record:
        case positional::optional_record:
            app.add_option("RECORD", given.record, "record type");
            return;
        case positional::names:
            app.add_option("NAME", given.words, "record type or module, such as aclidl_asn; all when there is none");
            return;
        case positional::shell:
            app.add_option("SHELL", given.record, "bash, zsh or fish")->required()->check(one_of(shells));
            return;
        case positional::files:
        case positional::none:
            return;
    }
}

void add_option(CLI::App& app, const option_row& option, settings& given) {
    const std::string names = option.letter == nullptr ? option.name : std::string(option.letter) + "," + option.name;
    if (option.flag != nullptr) {
        app.add_flag(names, given.*option.flag, option.help);
        return;
    }
    CLI::Option* added = option.texts != nullptr ? app.add_option(names, given.*option.texts, option.help)
                                                 : app.add_option(names, given.*option.text, option.help);
    added->type_name(option.choices != nullptr ? option.choices : option.value);
    if (option.texts != nullptr)
        added->allow_extra_args(false)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    else
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

int run_command_line(int argc, char** argv) {
    CLI::App app("Looks into encodings of authorization and policy records; turns records into JSON and back.",
                 "zrasn");
    app.set_version_flag("--version", std::string("zrasn ") + program_version());
    app.require_subcommand(1);
    settings given;
    for (const verb_row& verb : verbs()) {
        CLI::App* sub = app.add_subcommand(verb.name, verb.summary);
        add_positionals(*sub, verb, given);
        for (const option_row& option : options())
            if ((option.verbs & verb.bit) != 0) add_option(*sub, option, given);
        sub->footer(std::string("Example:\n  ") + verb.example);
    }
    app.footer(
        "Exit codes: 0 good, 1 data refused or not all used, 2 usage, 3 input or output, 4 deviations "
        "(check).\n\nExample:\n  zrasn decode "
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
            names.push_back(known.name);
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
