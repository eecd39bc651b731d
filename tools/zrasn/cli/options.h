// The command line: one table of verbs and one of options. Parsing, help, completion and the manual page all follow it.
#pragma once

#include <string>
#include <vector>

namespace zr::tool {

// What the command line said, before names are looked up.
struct settings {
    std::string record;              // of --record, or the only word
    std::vector<std::string> words;  // what has no option's name
    std::string output;
    std::string from = "auto";
    std::string color = "auto";
    std::string version_byte = "2";
    std::string framing = "auto";
    std::string extract;
    std::string against;
    std::string depth;
    std::string offset = "0";
    std::string seed = "0";
    std::vector<std::string> select;
    std::vector<std::string> where;
    bool json = false;
    bool example = false;
    bool hex = false;
    bool base64 = false;
    bool lines = false;
    bool compact = false;
    bool quiet = false;
    bool all = false;
    bool octets = false;
    bool filled = false;
    bool whole = false;
    bool show_secrets = false;
};

// What may be said on the command line without a name of its own.
enum class positional { none, record, optional_record, names, files, shell };

struct verb_row {
    const char* name;
    unsigned bit;  // in option_row::verbs
    const char* summary;
    positional first, second;
    const char* example;
    int (*run)(const settings& given);
};

struct option_row {
    const char* name;     // such as "--from"
    const char* letter;   // such as "-o", or null
    const char* value;    // what its value is called; null for a switch
    const char* choices;  // the values, separated by |; null when there are others
    const char* help;
    unsigned verbs;  // that have it: a bit each
    bool settings::*flag;
    std::string settings::*text;
    std::vector<std::string> settings::*texts = nullptr;  // of one that may be given several times
};

// What a value is, so that shells can complete it; a number, which they cannot, is another one.
enum class value_kind { other, choices, record, file, directory, member };
value_kind value_kind_of(const option_row& option);

const std::vector<verb_row>& verbs();
const std::vector<option_row>& options();

// As shown in messages and help: "RECORD", "[FILE ...]".
const char* positional_name(positional argument);

// Those whose completion there is, separated by |.
extern const char shells[];

const char* program_version();

}  // namespace zr::tool
