// How the program ends.
#pragma once

namespace zr::tool {

// The exit codes of the program.
enum exit_code : int {
    exit_good = 0,      // all went well
    exit_refused = 1,   // the data was refused, or has more, or other, than the answer shows
    exit_usage = 2,     // the command line makes no sense
    exit_io = 3,        // input could not be read or output not written
    exit_deviates = 4,  // check: all fits, but is not as the library writes it; schema --against: new reads old
};

// Those of the verb "diff", which are the program diff's.
enum diff_code : int { diff_same = 0, diff_differ = 1, diff_trouble = 2 };

// The code of two inputs together: the graver one.
inline int graver(int a, int b) {
    for (int code : {exit_io, exit_usage, exit_refused, exit_deviates})
        if (a == code || b == code) return code;
    return exit_good;
}

}  // namespace zr::tool
