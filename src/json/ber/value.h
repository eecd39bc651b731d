// What the contents of a primitive element say, in a few characters.
#pragma once

#include "json/base/output.h"
#include "json/ber/scanner.h"

namespace zr::json {

// write_value writes the value of an element by its universal type: numbers in decimal digits (of more than 64 octets:
// 0x and the contents as they stand), texts in quotes, dotted identifiers, and octets as hexadecimal digits. Contents
// that are not of their type, or not all there, are "octets" and their digits. Long values are cut, with their length
// behind, unless they are wanted whole. Nothing is written for an element without contents that needs none. Only
// printable characters are written, at most eight for each octet.
enum class value_size { cut, whole };
void write_value(output& out, const ber_item& item, const unsigned char* contents, value_size size = value_size::cut);

// A number in decimal digits, filled up with spaces on the left to a width of at most 20.
void write_number(output& out, uint64_t number, size_t width = 0);

// What X.690 does not permit of the form and contents of an element that could be read; null when nothing is wrong.
const char* wrong_contents(const ber_item& item, const unsigned char* contents);

}  // namespace zr::json
