// How the program ends.
#pragma once

namespace zr::tool {

// The exit codes of the program.
enum exit_code : int {
    exit_good = 0,     // all went well
    exit_refused = 1,  // the data was refused, deviates (check), or has more, or other, than the answer shows
    exit_usage = 2,    // the command line makes no sense
    exit_io = 3,       // input could not be read or output not written
};

}  // namespace zr::tool
