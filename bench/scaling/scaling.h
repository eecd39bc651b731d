// How the library's cost grows: per octet, per level of records that contain themselves, per element of a list.
#pragma once

#include <vector>

#include "bench/harness/runner.h"

namespace bench {

// scaling_cases gives cases called "what size/peer/encode" and ".../decode", for the library and the floor, and for the
// hand-written coder where there is one. "reading" reads one octet of every block of the record that is encoded.
std::vector<timed_case> scaling_cases();

}  // namespace bench
