// The verbs of the tool and what each is asked to do. cli/command_line.cpp fills these from the command line; a verb
// reads its input, writes its answer and returns the exit code.
#pragma once

#include <string>
#include <vector>

#include "asn1/record/registry.h"
#include "base/color.h"
#include "base/exit_code.h"
#include "base/library.h"
#include "input/envelopes.h"
#include "input/text_decoder.h"
#include "json/base/secrets.h"
#include "json/document/selection.h"

namespace zr::tool {

// Records and modules are looked up before the verb runs: a pointer is null only where the name was left out. There is
// at least one file; one named "-" is the standard input.

// records [RECORD]: all record types, or one of them.
struct records_options {
    const record_type* record = nullptr;
    bool json = false;
    bool example = false;  // a value of the record instead, as JSON
    color_mode color = color_mode::automatic;
};
int run_records(const records_options& options);

// schema [RECORD|MODULE ...]: complete ASN.1 modules. No names at all: every module. Otherwise the named records and
// modules, in the order given, and what they need.
struct schema_options {
    std::vector<const record_type*> records;
    std::vector<const record_module*> modules;
    bool json = false;    // JSON Schema of the JSON that encode takes, instead
    std::string against;  // a file with what "records --json" wrote of another version, to be compared instead
    color_mode color = color_mode::automatic;
};
int compare_schemas(const schema_options& options);
int run_schema(const schema_options& options);

// encode RECORD [FILE ...]: JSON to envelopes, one behind the other.
struct encode_options {
    const record_type* record = nullptr;
    std::vector<std::string> files = {"-"};
    std::string output;  // -o; empty is the standard output
    bool hex = false;
    bool base64 = false;
    bool lines = false;  // one JSON value a line in, one line of hex a record out
    unsigned version = 2;
};
int run_encode(const encode_options& options);

// decode [RECORD] [FILE ...]: envelopes, or the bare BER element, to JSON; `lines` needs a record.
struct decode_options {
    const record_type* record = nullptr;
    std::vector<std::string> files = {"-"};
    std::string output;  // -o; empty is the standard output
    input_form from = input_form::automatic;
    framing_form framing;
    bool lines = false;  // one line of hex a record in, one line of JSON out
    bool compact = false;
    unsigned version = 2;
    color_mode color = color_mode::automatic;
    secret_values secrets = secret_values::hidden;
    selection* asked = nullptr;  // of the record: which records and members are wanted; null for all
};
int run_decode(const decode_options& options);

// dump [RECORD] [FILE ...]: any BER as an indented tree.
struct dump_options {
    const record_type* record = nullptr;
    std::vector<std::string> files = {"-"};
    input_form from = input_form::automatic;
    color_mode color = color_mode::automatic;
    secret_values secrets = secret_values::hidden;
    size_t depth = SIZE_MAX;  // levels that are shown
    uint64_t offset = 0;      // of the octet to begin at
    bool json = false;
    bool whole = false;  // long values are not cut, nor lines to the window, nor many lines left out
};
int run_dump(const dump_options& options);

// check [RECORD] [FILE ...]: does it fit, and where does it deviate from what the library writes.
struct check_options {
    const record_type* record = nullptr;
    std::vector<std::string> files = {"-"};
    input_form from = input_form::automatic;
    framing_form framing;
    bool lines = false;  // one record a line: hex or JSON, its name before it or not
    // Nothing is said of what fits, nor where it deviates; counts only where there are several.
    bool quiet = false;
    bool all = false;  // deviations beyond what most_shown has room for too
    unsigned version = 2;
    color_mode color = color_mode::automatic;
    secret_values secrets = secret_values::hidden;
};
int run_check(const check_options& options);

// roundtrip [RECORD] [FILE ...]: decode, encode, compare; counts of what differs.
struct roundtrip_options {
    const record_type* record = nullptr;  // with `lines` each line may name its own
    std::vector<std::string> files = {"-"};
    input_form from = input_form::automatic;
    framing_form framing;
    bool lines = false;  // one record a line: hex or JSON
    bool json = false;   // the counts
    unsigned version = 2;
    color_mode color = color_mode::automatic;
};
int run_roundtrip(const roundtrip_options& options);

// sample RECORD: a value of the record that nobody had to write.
struct sample_options {
    const record_type* record = nullptr;
    std::string output;  // -o; empty is the standard output
    uint64_t seed = 0;
    bool filled = false;
    bool compact = false;
    enum class form { json, octets, hex, base64 } as = form::json;
    unsigned version = 2;
    color_mode color = color_mode::automatic;
};
int run_sample(const sample_options& options);

// canon [RECORD] [FILE ...]: what is accepted, in the library's own form.
struct canon_options {
    const record_type* record = nullptr;
    std::vector<std::string> files = {"-"};
    std::string output;  // -o; empty is the standard output
    input_form from = input_form::automatic;
    framing_form framing;
    bool hex = false;
    bool base64 = false;
    unsigned version = 2;
    color_mode color = color_mode::automatic;
};
int run_canon(const canon_options& options);

// diff [RECORD] A B: two values, as octets or JSON, by their members. Gives a diff_code.
struct diff_options {
    const record_type* record = nullptr;
    std::string a, b;
    input_form from = input_form::automatic;
    bool all = false;  // differences beyond the first 1,000 too
    unsigned version = 2;
    color_mode color = color_mode::automatic;
    secret_values secrets = secret_values::hidden;
};
int run_diff(const diff_options& options);

// find FILE ...: the envelopes in any files.
struct find_options {
    std::vector<std::string> files;
    std::string extract;  // the directory into which those that fit a record are written; empty for none
    bool json = false;
    unsigned version = 2;
    color_mode color = color_mode::automatic;
};
int run_find(const find_options& options);

// wireshark: a dissector in Lua for all records.
int run_wireshark();

}  // namespace zr::tool
