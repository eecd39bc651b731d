// What has no peers: values that are named by type codes, and texts between code sets.
#pragma once

#include <vector>

#include "bench/harness/runner.h"

namespace bench {

// type_code_cases gives cases called "what/type code/encode" and ".../decode", and "what/plain record/..." for the same
// fields in a record without type code.
std::vector<timed_case> type_code_cases();

// conversion_cases gives cases called "source to target/characters/convert", such as "UTF-8 to BMP/20/convert". Every
// tenth character is é, the others are ASCII. Conversions from and to the local code set are left out, with a message,
// when the locale that the build makes for them is not there.
std::vector<timed_case> conversion_cases();

}  // namespace bench
