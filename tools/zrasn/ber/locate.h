// Where an encoding stops being a record's.
#pragma once

#include <cstddef>
#include <string>

#include "asn1/record/registry.h"

namespace zr::tool {

struct mismatch {
    size_t offset = 0;     // of the first octet that does not fit; of what follows the record when all fits
    int status = 0;        // of the library's reader there
    std::string path;      // of the member that was to be read; empty for the record itself
    std::string found;     // in words, such as "a UTF8String (0c)"
    std::string expected;  // in words, such as "an INTEGER (02)"
    size_t elements = 0;   // that fit before it: values, and SEQUENCEs by their headers
};

// locate_mismatch reads the octets, without an envelope header, as the record's decode does, and finds out what makes
// it fail; false when nothing does. It works with a stack of its own, so that any depth will do.
bool locate_mismatch(const unsigned char* data, size_t size, const record_type& type, mismatch& found);

// record_end answers where an encoding that decodes as the record ends.
size_t record_end(const unsigned char* data, size_t size, const record_type& type);

}  // namespace zr::tool
