// How the program ends.
#pragma once

namespace zr::tool {

// The exit codes of the program.
enum exit_code : int {
    exit_good = 0,      // all went well
    exit_refused = 1,   // the data was refused, or has more, or other, than the answer shows
    exit_usage = 2,     // the command line makes no sense
    exit_io = 3,        // input could not be read or output not written
    exit_deviates = 4,  // check: what was read fits, but is not as the library writes it
};

// The code of two inputs together: the graver one.
inline int graver(int a, int b) {
    for (int code : {exit_io, exit_usage, exit_refused, exit_deviates})
        if (a == code || b == code) return code;
    return exit_good;
}

}  // namespace zr::tool
