#include "cli/options.h"

#include <cstring>

#include "cli/verb_calls.h"

namespace zr::tool {

namespace {

enum verb_bit : unsigned {
    on_records = 1,
    on_schema = 2,
    on_encode = 4,
    on_decode = 8,
    on_dump = 16,
    on_check = 32,
    on_roundtrip = 64,
    on_find = 128,
    on_sample = 256,
    on_canon = 512,
    on_diff = 1024,
};

}  // namespace

const std::vector<verb_row>& verbs() {
    static const std::vector<verb_row> rows = {
        {"records", on_records, "show the record types: name, module, fields with their kinds",
         positional::optional_record, positional::none, "zrasn records acl_ext_s_t", records_verb},
        {"schema", on_schema, "print ASN.1 modules that other ASN.1 compilers accept, or JSON Schema",
         positional::names, positional::none, "zrasn schema aclidl_asn > Aclidl-asn.asn1", schema_verb},
        {"encode", on_encode, "turn JSON into the octets of envelopes", positional::record, positional::files,
         "zrasn encode acl_ext_s_t acl.json -o acl.ber", encode_verb},
        {"decode", on_decode, "turn the octets of envelopes into JSON", positional::optional_record, positional::files,
         "zrasn decode acl_ext_s_t acl.ber", decode_verb},
        {"dump", on_dump, "show any BER as a tree", positional::optional_record, positional::files,
         "zrasn dump --record acl_ext_s_t acl.ber", dump_verb},
        {"check", on_check, "say whether an encoding fits a record and where it deviates from what the library writes",
         positional::optional_record, positional::files, "zrasn check acl.ber", check_verb},
        {"roundtrip", on_roundtrip, "decode, encode again and compare: counts of what differs, without any value",
         positional::optional_record, positional::files, "zrasn roundtrip --lines captured.txt", roundtrip_verb},
        {"canon", on_canon, "write what is accepted in the library's own form", positional::optional_record,
         positional::files, "zrasn canon acl_ext_s_t acl.ber -o canonical.ber", canon_verb},
        {"sample", on_sample, "make a value of a record, as JSON or octets", positional::record, positional::none,
         "zrasn sample acl_ext_s_t --filled --seed 7", sample_verb},
        {"diff", on_diff, "compare two values of a record, each as octets or JSON, member by member",
         positional::optional_record, positional::files, "zrasn diff acl_ext_s_t old.ber new.json", diff_verb},
        {"find", on_find, "find the envelopes in any file: a capture, a core, a log, a disk", positional::none,
         positional::files, "zrasn find --extract found core", find_verb},
        {"wireshark", 0, "print a dissector for Wireshark and tshark, in Lua", positional::none, positional::none,
         "zrasn wireshark > ~/.local/lib/wireshark/plugins/zrasn.lua", wireshark_verb},
        {"completion", 0, "print the completion script for a shell", positional::shell, positional::none,
         "zrasn completion bash > /etc/bash_completion.d/zrasn", completion_verb},
        {"manual", 0, "print the manual page", positional::none, positional::none, "zrasn manual | man -l -",
         manual_verb},
    };
    return rows;
}

const char shells[] = "bash|zsh|fish";
const char framing_forms[] = "auto|one|concatenated|2|4|2le|4le";

const std::vector<option_row>& options() {
    static const std::vector<option_row> rows = {
        {"--json", nullptr, nullptr, nullptr, "as JSON (schema: JSON Schema of what encode takes)",
         on_records | on_schema | on_dump | on_roundtrip | on_find, &settings::json, nullptr},
        {"--example", nullptr, nullptr, nullptr, "an example of the record, as JSON that encode takes", on_records,
         &settings::example, nullptr},
        {"--octets", nullptr, nullptr, nullptr, "write an envelope instead of JSON", on_sample, &settings::octets,
         nullptr},
        {"--filled", nullptr, nullptr, nullptr, "something in every member", on_sample, &settings::filled, nullptr},
        {"--seed", nullptr, "N", nullptr, "another value for each number; 0 is the smallest", on_sample, nullptr,
         &settings::seed},
        {"--record", nullptr, "RECORD", nullptr, "the record type: then all arguments are files",
         on_encode | on_decode | on_dump | on_check | on_roundtrip | on_canon | on_diff, nullptr, &settings::record},
        {"--from", nullptr, "FORM", "auto|raw|hex|base64|dump", "form of the input, instead of recognising it",
         on_decode | on_dump | on_check | on_roundtrip | on_canon | on_diff, nullptr, &settings::from},
        {"--hex", nullptr, nullptr, nullptr, "write hexadecimal digits (as on a terminal)",
         on_encode | on_sample | on_canon, &settings::hex, nullptr},
        {"--base64", nullptr, nullptr, nullptr, "write base64", on_encode | on_sample | on_canon, &settings::base64,
         nullptr},
        {"--version-byte", nullptr, "N", nullptr,
         "version in the envelope header, 0 to 255, to write or expect; all encodings but those by type codes have 2",
         on_encode | on_decode | on_check | on_roundtrip | on_find | on_sample | on_canon | on_diff, nullptr,
         &settings::version_byte},
        {"--extract", nullptr, "DIRECTORY", nullptr, "write those that fit a record into the directory, as OFFSET.ber",
         on_find, nullptr, &settings::extract},
        {"--lines", nullptr, nullptr, nullptr, "one record a line: JSON on one side, hexadecimal digits on the other",
         on_encode | on_decode | on_check | on_roundtrip, &settings::lines, nullptr},
        {"--framing", nullptr, "FORM", framing_forms,
         "how envelopes follow each other: one behind the other, or each behind its length of 2 or 4 octets (le: the "
         "low octet first)",
         on_decode | on_check | on_roundtrip | on_canon, nullptr, &settings::framing},
        {"--where", nullptr, "PATH=VALUE", nullptr,
         "only records whose member has the value, such as \"entries[0].id.name=clerks\"; of a list without an index "
         "any "
         "element; of several all must hold. What is not on the paths is not read",
         on_decode, nullptr, nullptr, &settings::where},
        {"--select", nullptr, "PATH,...", nullptr, "only these members; what is not on the paths is not read",
         on_decode, nullptr, nullptr, &settings::select},
        {"--all", nullptr, nullptr, nullptr,
         "show all: more than 1,000 differences, or more deviations than 100 times the input", on_check | on_diff,
         &settings::all, nullptr},
        {"--against", nullptr, "FILE", nullptr,
         "compare with what \"zrasn records --json\" wrote of another version: compatible both ways (0), new reads old "
         "(4), breaking (1)",
         on_schema, nullptr, &settings::against},
        {"--depth", nullptr, "N", nullptr, "show so many levels: problems below them too, but no elements", on_dump,
         nullptr, &settings::depth},
        {"--offset", nullptr, "N", nullptr, "begin at this octet of the input", on_dump, nullptr, &settings::offset},
        {"--whole", nullptr, nullptr, nullptr,
         "show all: long values, lines wider than the window, lines beyond 100 times the input", on_dump,
         &settings::whole, nullptr},
        {"--quiet", "-q", nullptr, nullptr, "say only what does not fit, and counts", on_check, &settings::quiet,
         nullptr},
        {"--compact", nullptr, nullptr, nullptr, "write JSON on one line", on_decode | on_sample, &settings::compact,
         nullptr},
        {"--show-secrets", nullptr, nullptr, nullptr, "show the values of members marked secret, not \"***\"",
         on_decode | on_dump | on_check | on_diff, &settings::show_secrets, nullptr},
        {"--output", "-o", "FILE", nullptr, "write to the file instead of standard output",
         on_encode | on_decode | on_sample | on_canon, nullptr, &settings::output},
        {"--color", nullptr, "WHEN", "auto|always|never",
         "colours, of JSON too; auto means on a terminal, unless NO_COLOR is set or TERM is dumb",
         on_records | on_schema | on_decode | on_dump | on_check | on_roundtrip | on_canon | on_sample | on_diff |
             on_find,
         nullptr, &settings::color},
    };
    return rows;
}

value_kind value_kind_of(const option_row& option) {
    if (option.choices != nullptr) return value_kind::choices;
    if (option.value == nullptr) return value_kind::other;
    if (std::strcmp(option.value, "RECORD") == 0) return value_kind::record;
    if (std::strcmp(option.value, "DIRECTORY") == 0) return value_kind::directory;
    if (std::strncmp(option.value, "PATH", 4) == 0) return value_kind::member;
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
        case positional::files:
            return "[FILE ...]";
        case positional::shell:
            return shells;
        case positional::none:
            break;
    }
    return "";
}

const char* program_version() { return ZRASN_VERSION; }

}  // namespace zr::tool
