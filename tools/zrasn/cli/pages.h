// What the program says about itself, from the tables of verbs, options and statuses.
#pragma once

#include <string>

namespace zr::tool {

// The completion script for "bash", "zsh" or "fish" (options of verbs, names of records), and the manual page as roff.
int print_completion(const std::string& shell);
int print_manual();

}  // namespace zr::tool
