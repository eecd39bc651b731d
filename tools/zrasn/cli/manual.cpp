// The manual page (man 7 groff_man), from the tables of verbs, options and statuses.
#include <cstdio>
#include <string>

#include "asn1/status_text.h"
#include "cli/options.h"
#include "cli/pages.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

// Hyphens are minus signs in what is to be typed; a line must not begin with a control character.
std::string roff(const std::string& text) {
    std::string safe;
    for (char c : text) {
        if (c == '-')
            safe += "\\-";
        else if (c == '\\')
            safe += "\\e";
        else if ((c == '.' || c == '\'') && safe.empty())
            safe += std::string("\\&") + c;
        else
            safe += c;
    }
    return safe;
}

void line(const std::string& text) { std::printf("%s\n", roff(text).c_str()); }

void print_option(const option_row& option) {
    std::printf(".TP\n\\fB%s\\fR", roff(option.name).c_str());
    if (option.letter != nullptr) std::printf(", \\fB%s\\fR", roff(option.letter).c_str());
    if (option.value != nullptr)
        std::printf(" \\fI%s\\fR", roff(option.choices != nullptr ? option.choices : option.value).c_str());
    std::printf("\n");
    line(option.help);
}

void print_verb(const verb_row& verb) {
    std::printf(".SS zrasn %s", verb.name);
    for (positional argument : {verb.first, verb.second})
        if (argument != positional::none) std::printf(" %s", positional_name(argument));
    std::printf("\n");
    line(verb.summary);
    for (const option_row& option : options())
        if ((option.verbs & verb.bit) != 0) print_option(option);
    std::printf(".PP\nExample:\n.PP\n.RS\n.nf\n%s\n.fi\n.RE\n", roff(verb.example).c_str());
}

}  // namespace

int print_manual() {
    std::printf(".TH ZRASN 1 \"\" \"zrasn %s\" \"User commands\"\n.SH NAME\n", program_version());
    std::printf("zrasn \\- look into encodings of records, turn records into JSON and back\n.SH SYNOPSIS\n");
    for (const verb_row& verb : verbs()) {
        std::printf(".B zrasn %s\n[options]", verb.name);
        for (positional argument : {verb.first, verb.second})
            if (argument != positional::none) std::printf(" %s", positional_name(argument));
        std::printf("\n.br\n");
    }
    std::printf(".SH DESCRIPTION\n");
    line(
        "An encoding is the header 04, version, AC, DC and one BER element (ITU-T X.690). The input of decode, dump, "
        "check and roundtrip may have the header or not, and may be octets as they are, hexadecimal digits (with "
        "spaces, line ends, "
        "colons, commas, 0x), base64, base64 between -----BEGIN and -----END lines, or what xxd, hexdump and od print; "
        "which it is is recognised. No "
        "FILE, or -, is standard input. The first argument is the record, if it names one, else a file. Envelopes that "
        "follow each other are read one by one; what follows a single record is told on standard error.");
    std::printf(".SH VERBS\n");
    for (const verb_row& verb : verbs())
        print_verb(verb);
    std::printf(".SH JSON\n");
    line(
        "A record is an object with the names of the C structure's members, in their order. Members that count are "
        "left "
        "out: the pointer beside them stands for both. Integers are numbers, texts strings, byte strings strings of "
        "hexadecimal digits, lists arrays. A text that is not UTF-8 is {\"hex\": \"...\"}. A record that is absent is "
        "null. Slots are an array with null for empty ones, without those behind the last. uuid_t is its text of 36 "
        "characters. When JSON is read, members may stand in any order and be missing: then they are empty, 0 or "
        "absent.");
    std::printf(".SH EXIT STATUS\n");
    for (const char* row :
         {"0\tgood", "1\tthe data was refused, or has more, or other, than the answer shows",
          "2\tthe command line makes no sense", "3\tinput could not be read or output not written",
          "4\tcheck: all fits, with deviations from what the library writes; schema \\-\\-against: new reads old"})
        std::printf(".TP\n%c\n%s\n", row[0], row + 2);
    std::printf(".SH DIAGNOSTICS\nOctets that are refused are reported with the library's status:\n");
    for (const status_row& row : statuses()) {
        if (row.status == 0) continue;
        std::printf(".TP\n%d %s\n", row.status, row.name);
        line(row.text);
    }
    std::printf(".SH ENVIRONMENT\n.TP\nNO_COLOR, TERM\nWhen NO_COLOR is set to something, or TERM to ");
    line("dumb or nothing, output has no colours unless --color always is given.");
    return exit_good;
}

}  // namespace zr::tool
