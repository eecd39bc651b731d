// The command line.
#pragma once

namespace zr::tool {

// Parses, runs the verb and gives the exit code. Throws what the verbs throw.
int run_command_line(int argc, char** argv);

}  // namespace zr::tool
