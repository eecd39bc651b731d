// The heap of a program that makes many small blocks at once.
#pragma once

#include <cstddef>

namespace zr::tool {

// Says that blocks of about so many octets together will be made. Where the system has it (glibc on Linux), the heap
// then grows in one step and in large pages, which are asked for where they are used: a page fault for each 4096 octets
// of a record costs as much as reading its JSON. Nothing happens for less than a megabyte, and nothing depends on it.
void expect_blocks(size_t octets);

}  // namespace zr::tool
