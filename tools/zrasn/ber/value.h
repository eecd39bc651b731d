// What the contents of a primitive element say, in a few characters.
#pragma once

#include "base/output.h"
#include "ber/scanner.h"

namespace zr::tool {

// write_value writes the value of an element by its universal type: numbers in decimal digits (of more than 64 octets:
// 0x and the contents as they stand), texts in quotes, dotted identifiers, and octets as hexadecimal digits. Contents
// that are not of their type, or not all there, are "octets" and their digits. Long values are cut, with their length
// behind. Nothing is written for an element without contents that needs none. Only printable characters are written.
void write_value(output& out, const ber_item& item, const unsigned char* contents);

// A number in decimal digits, filled up with spaces on the left.
void write_number(output& out, uint64_t number, size_t width = 0);

// What is wrong with the contents of an OBJECT IDENTIFIER or RELATIVE-OID (X.690, 8.19 and 8.20); null when nothing is.
const char* wrong_identifier(const unsigned char* contents, size_t count);

// "INTEGER" and the like; null for a universal tag that is not assigned.
const char* universal_type(uint64_t tag);

}  // namespace zr::tool
