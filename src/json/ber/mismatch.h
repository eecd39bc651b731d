// In words: where an encoding stops being a record's, and why.
#pragma once

#include <cstddef>
#include <string>

#include "asn1/record/registry.h"

namespace zr::json {

struct mismatch {
    size_t offset = 0;     // of the first octet that does not fit
    int status = 0;        // of the library's reader there
    std::string path;      // of the member that was to be read; empty for the record itself
    std::string found;     // such as "a UTF8String (0c)"
    std::string expected;  // such as "an INTEGER (02)"
};

// find_mismatch finds out what makes the record's decode of octets without an envelope's header fail; false when
// nothing does.
bool find_mismatch(const unsigned char* data, size_t size, const record_type& type, mismatch& found);

// refusal_words says "found ..., expected ..." of where a decode stopped; `data` is what the refusal's offset counts
// from.
std::string refusal_words(const refusal& at, const unsigned char* data);

// record_end answers where an encoding that decodes as the record ends. It is decoded for it: what ends one of
// indefinite length is the library's to say, for its readers take more than BER, and identifiers that wrap around end
// one of definite length before its length does.
size_t record_end(const unsigned char* data, size_t size, const record_type& type);

}  // namespace zr::json
