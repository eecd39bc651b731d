// The heap of a program that makes many small blocks at once.
#pragma once

#include <cstddef>

namespace zr::tool {

// Says that a record will be made of so many octets of input, with blocks of about twice as many. Where the system has
// it (glibc on Linux), the heap then grows in one step and in large pages, so that few page faults are taken
// (bench/documents.sh). Nothing happens for less than half a megabyte, and nothing depends on it.
void expect_record(size_t octets);

}  // namespace zr::tool
