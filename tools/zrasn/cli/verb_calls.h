// From what the command line said to what a verb is asked to do.
#pragma once

#include <string>

#include "cli/options.h"

namespace zr::tool {

// A name on the command line that means nothing.
struct usage_error {
    std::string message;
};

// Each looks up the names that were given, runs its verb and gives the exit code. Throws usage_error and what the verb
// throws.
int records_verb(const settings& given);
int schema_verb(const settings& given);
int encode_verb(const settings& given);
int decode_verb(const settings& given);
int dump_verb(const settings& given);
int check_verb(const settings& given);
int roundtrip_verb(const settings& given);
int sample_verb(const settings& given);
int canon_verb(const settings& given);
int diff_verb(const settings& given);
int find_verb(const settings& given);
int wireshark_verb(const settings& given);
int completion_verb(const settings& given);
int manual_verb(const settings& given);

}  // namespace zr::tool
