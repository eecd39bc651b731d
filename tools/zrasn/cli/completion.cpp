// Completion scripts, from the tables of verbs and options.
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include "base/library.h"
#include "cli/options.h"
#include "cli/pages.h"
#include "json/base/members.h"
#include "json/base/suggest.h"
#include "json/ber/record_match.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

std::string spaced(const char* choices) {
    std::string words = choices;
    for (char& c : words)
        if (c == '|') c = ' ';
    return words;
}

std::string all_records() {
    std::string names;
    for (std::string_view name : record_names())
        names += (names.empty() ? "" : " ") + std::string(name);
    return names;
}

std::string all_modules() {
    std::string names;
    for (const record_module* module : modules())
        names += (names.empty() ? "" : " ") + std::string(module->name);
    return names;
}

void for_each_option(const verb_row& verb, const std::function<void(const option_row&)>& visit) {
    for (const option_row& option : options())
        if ((option.verbs & verb.bit) != 0) visit(option);
}

// What `quote` is put around must not hold one.
std::string quoted(const char* text) {
    std::string safe = "'";
    for (const char* c = text; *c != 0; ++c)
        safe += *c == '\'' ? std::string("'\\''") : std::string(1, *c);
    return safe + "'";
}

const char* record_words(positional argument) {
    if (argument == positional::record || argument == positional::optional_record) return "$records";
    return argument == positional::names ? "$records $modules" : "";
}

// The members of each record: `print` is given its names, separated by `between`, and the members.
void print_members(const char* between, void (*print)(const char* names, const char* members)) {
    for (const record_type* type : known_records()) {
        const std::string_view name = type->name;
        std::string names(name), members;
        for (std::string_view ending : {"_s_t", "_t"})
            if (name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending) {
                names += between + std::string(name.substr(0, name.size() - ending.size()));
                break;
            }
        for (const field& member : *type)
            if (has_member(member.value)) members += (members.empty() ? "" : " ") + std::string(member.name);
        print(names.c_str(), members.c_str());
    }
}

void print_bash() {
    std::printf("# Completion of zrasn for bash.\n_zrasn_members() {\n    case \"$1\" in\n");
    print_members(
        "|", [](const char* names, const char* members) { std::printf("        %s) echo '%s' ;;\n", names, members); });
    std::printf("    esac\n}\n_zrasn() {\n");
    std::printf("    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} verb=${COMP_WORDS[1]}\n");
    std::printf("    local records='%s'\n    local modules='%s'\n", all_records().c_str(), all_modules().c_str());
    // Bash takes --option=value for three words. Behind a comma the next path begins.
    std::printf("    [ \"$cur\" = = ] && cur=\n    [ \"$prev\" = = ] && prev=${COMP_WORDS[COMP_CWORD-2]}\n");
    std::printf("    local record=${COMP_WORDS[2]-} paths= i\n    case \"$cur\" in *,*) paths=${cur%%,*}, ;; esac\n");
    std::printf("    for ((i = 3; i < COMP_CWORD; i++)); do\n");
    std::printf("        [ \"${COMP_WORDS[i-1]}\" = --record ] && record=${COMP_WORDS[i]}\n    done\n");
    std::printf("    COMPREPLY=()\n    if [ \"$COMP_CWORD\" -eq 1 ]; then\n        COMPREPLY=($(compgen -W '");
    for (const verb_row& verb : verbs())
        std::printf("%s ", verb.name);
    std::printf("--help --version' -- \"$cur\"))\n        return\n    fi\n    case \"$prev\" in\n");
    for (const option_row& option : options()) {
        const value_kind kind = value_kind_of(option);
        if (option.value == nullptr) continue;
        std::printf("        %s%s%s) ", option.letter == nullptr ? "" : option.letter,
                    option.letter == nullptr ? "" : "|", option.name);
        if (kind == value_kind::choices)
            std::printf("COMPREPLY=($(compgen -W '%s' -- \"$cur\")); return ;;\n", spaced(option.choices).c_str());
        else if (kind == value_kind::record)
            std::printf("COMPREPLY=($(compgen -W \"$records\" -- \"$cur\")); return ;;\n");
        else if (kind == value_kind::file)
            std::printf("COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n");
        else if (kind == value_kind::directory)
            std::printf("COMPREPLY=($(compgen -d -- \"$cur\")); return ;;\n");
        else if (kind == value_kind::member)
            std::printf(
                "COMPREPLY=($(compgen -P \"$paths\" -W \"$(_zrasn_members \"$record\")\" -- \"${cur##*,}\"))\n"
                "            compopt -o nospace 2> /dev/null; return ;;\n");
        else
            std::printf("return ;;\n");
    }
    std::printf("    esac\n    local words= files=\n    case \"$verb\" in\n");
    for (const verb_row& verb : verbs()) {
        std::printf("        %s) words='--help", verb.name);
        for_each_option(verb, [](const option_row& option) { std::printf(" %s", option.name); });
        std::printf("'");
        const char* words = record_words(verb.first);
        if (verb.first == positional::names)
            std::printf("; words=\"$words %s\"", words);
        else if (*words != 0)
            std::printf("; [ \"$COMP_CWORD\" -eq 2 ] && words=\"$words %s\"", words);
        if (verb.second == positional::files) std::printf("; files=1");
        if (verb.first == positional::shell) std::printf("; words=\"$words %s\"", spaced(shells).c_str());
        std::printf(" ;;\n");
    }
    std::printf("    esac\n    COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n");
    std::printf("    [ -z \"$files\" ] || COMPREPLY+=($(compgen -f -- \"$cur\"))\n}\n");
    std::printf("complete -o filenames -F _zrasn zrasn\n");
}

const char* zsh_action(positional argument) {
    switch (argument) {
        case positional::record:
            return "record:($records)";
        case positional::optional_record:
            return ":record:($records)";
        case positional::names:
            return "record or module:($records $modules)";
        case positional::files:
            return ":file:_files";
        case positional::shell:
            return "shell:(bash zsh fish)";
        default:
            return nullptr;
    }
}

// Brackets and colons mean something inside of _arguments' specifications.
std::string zsh_text(const char* text) {
    std::string safe;
    for (const char* c = text; *c != 0; ++c) {
        if (*c == '[' || *c == ']' || *c == ':') safe += '\\';
        safe += *c;
    }
    return safe;
}

void print_zsh() {
    std::printf("#compdef zrasn\n# Completion of zrasn for zsh.\n_zrasn_members() {\n    local -a members\n");
    std::printf("    case ${opt_args[--record]:-$words[2]} in\n");
    print_members("|", [](const char* names, const char* members) {
        std::printf("        %s) members=(%s) ;;\n", names, members);
    });
    std::printf("    esac\n    compset -P '*,'\n    compadd -S '' -- $members\n}\n_zrasn() {\n");
    std::printf("    local -a verbs records modules\n    records=(%s)\n    modules=(%s)\n    verbs=(\n",
                all_records().c_str(), all_modules().c_str());
    for (const verb_row& verb : verbs()) {
        std::printf("        %s\n", quoted((std::string(verb.name) + ":" + zsh_text(verb.summary)).c_str()).c_str());
    }
    std::printf("    )\n    if (( CURRENT == 2 )); then\n        _describe verb verbs\n        return\n    fi\n");
    std::printf("    local verb=$words[2]\n    shift words\n    (( CURRENT-- ))\n    case $verb in\n");
    for (const verb_row& verb : verbs()) {
        std::printf("        %s) _arguments '--help[show help]'", verb.name);
        for_each_option(verb, [](const option_row& option) {
            std::string rest = "[" + zsh_text(option.help) + "]";
            const value_kind kind = value_kind_of(option);
            if (option.value != nullptr) rest += std::string(":") + option.value + ":";
            if (kind == value_kind::choices) rest += "(" + spaced(option.choices) + ")";
            if (kind == value_kind::file) rest += "_files";
            if (kind == value_kind::directory) rest += "_directories";
            if (kind == value_kind::member) rest += "_zrasn_members";
            const char* const again = option.texts != nullptr ? "*" : "";  // it may be given several times
            std::printf(" \\\n            %s", quoted((again + (option.name + rest)).c_str()).c_str());
            if (kind == value_kind::record) std::printf("\"($records)\"");
            if (option.letter != nullptr)
                std::printf(" \\\n            %s", quoted((option.letter + rest).c_str()).c_str());
        });
        const char* first = zsh_action(verb.first);
        const char* second = zsh_action(verb.second);
        if (first != nullptr)
            std::printf(" \\\n            \"%s%s\"", verb.first == positional::names ? "*:" : "1:", first);
        if (second != nullptr) std::printf(" \\\n            \"*:%s\"", second);
        std::printf(" ;;\n");
    }
    std::printf("    esac\n}\nif [ \"$funcstack[1]\" = _zrasn ]; then _zrasn \"$@\"; else compdef _zrasn zrasn; fi\n");
}

void print_fish() {
    std::printf("# Completion of zrasn for fish.\nset -l records %s\nset -l modules %s\ncomplete -c zrasn -f\n",
                all_records().c_str(), all_modules().c_str());
    std::printf("function __zrasn_members\n    switch (commandline -opc)[3]\n");
    print_members(" ", [](const char* names, const char* members) {
        std::printf("        case %s\n            string split ' ' -- '%s'\n", names, members);
    });
    std::printf("    end\nend\ncomplete -c zrasn -n __fish_use_subcommand -l help -d 'show help'\n");
    std::printf("complete -c zrasn -n __fish_use_subcommand -l version -d 'show the version'\n");
    for (const verb_row& verb : verbs()) {
        std::printf("complete -c zrasn -n __fish_use_subcommand -a %s -d %s\n", verb.name,
                    quoted(verb.summary).c_str());
        const std::string in_verb = "complete -c zrasn -n '__fish_seen_subcommand_from " + std::string(verb.name) + "'";
        std::printf("%s -l help -d 'show help'\n", in_verb.c_str());
        const std::string words = record_words(verb.first);
        if (!words.empty()) std::printf("%s -a \"%s\"\n", in_verb.c_str(), words.c_str());
        if (verb.second == positional::files) std::printf("%s -F\n", in_verb.c_str());
        if (verb.first == positional::shell) std::printf("%s -a '%s'\n", in_verb.c_str(), spaced(shells).c_str());
        for_each_option(verb, [&](const option_row& option) {
            std::printf("%s -l %s", in_verb.c_str(), option.name + 2);
            if (option.letter != nullptr) std::printf(" -s %s", option.letter + 1);
            std::printf(" -d %s", quoted(option.help).c_str());
            switch (value_kind_of(option)) {
                case value_kind::choices:
                    std::printf(" -x -a '%s'", spaced(option.choices).c_str());
                    break;
                case value_kind::record:
                    std::printf(" -x -a \"$records\"");
                    break;
                case value_kind::file:
                    std::printf(" -r -F");
                    break;
                case value_kind::directory:
                    std::printf(" -x -a '(__fish_complete_directories)'");
                    break;
                case value_kind::member:
                    std::printf(" -x -a '(__zrasn_members)'");
                    break;
                case value_kind::other:
                    if (option.value != nullptr) std::printf(" -x");
                    break;
            }
            std::printf("\n");
        });
    }
}

}  // namespace

int print_completion(const std::string& shell) {
    if (shell == "bash") print_bash();
    if (shell == "zsh") print_zsh();
    if (shell == "fish") print_fish();
    return exit_good;
}

}  // namespace zr::tool
