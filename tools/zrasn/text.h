// Text from the input, made fit for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zr::tool {

// decode_utf8 answers how many octets the first character of `text` has (RFC 3629: no surrogates, no longer forms than
// needed, nothing above U+10FFFF) and gives its code point; 0 when the octets are no character or there are none.
size_t decode_utf8(std::string_view text, uint32_t& code_point);

// Whether all of `text` is UTF-8.
bool is_utf8(std::string_view text);

// is_printable answers whether a character may reach a terminal as it is. Not so are control characters (C0, DEL, C1),
// characters that change the direction or are invisible, separators of lines, private and non-characters.
bool is_printable(uint32_t code_point);

// printable gives `text` with everything escaped that may not reach a terminal: characters as \u{202e}, octets that are
// not UTF-8 as \xff, and the backslash as \\.
std::string printable(std::string_view text);

}  // namespace zr::tool
