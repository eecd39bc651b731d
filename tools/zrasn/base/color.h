// Colours of what goes to a terminal.
#pragma once

#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace zr::tool {

// --color; automatic is on for a terminal unless NO_COLOR is set to something.
enum class color_mode { automatic, always, never };

// Whether what goes to the descriptor is coloured: --color, NO_COLOR (set to something, it says no), TERM (so does
// "dumb", and none), and the terminal.
inline bool use_color(color_mode color, int descriptor) {
    if (color != color_mode::automatic) return color == color_mode::always;
    const char* no_color = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(descriptor) != 0 && (no_color == nullptr || *no_color == 0) && terminal != nullptr &&
           *terminal != 0 && std::strcmp(terminal, "dumb") != 0;
}

}  // namespace zr::tool
