// A place in a text, shown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zr::tool {

// show_place gives two lines, each ended: what stands around `offset` on its line, as it looks in the file but for what
// may not reach a terminal, and a caret below the place.
std::string show_place(std::string_view text, size_t offset);

}  // namespace zr::tool
