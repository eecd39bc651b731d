// What has no peers: values that are named by type codes, texts between code sets, octets in other forms.
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

// other_form_cases gives cases called "workload/way/encode" and ".../decode" of the six workloads: the forms for the
// local code set, where it is UTF-8, where it is ISO 8859-1 and all texts are ASCII, and where every tenth character is
// é, with "iconv" for one pass of the C library's converter over the same texts; and the plain decode of octets in
// other forms.
std::vector<timed_case> other_form_cases();

}  // namespace bench
