// Text from the input, made fit for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zr::json {

// decode_utf8 answers how many octets the first character of `text` has (RFC 3629: no surrogates, no longer forms than
// needed, nothing above U+10FFFF) and gives its code point; 0 when the octets are no character or there are none.
size_t decode_utf8(std::string_view text, uint32_t& code_point);

// Octets at the front of `text` that are whole characters of UTF-8.
size_t utf8_size(std::string_view text);
inline bool is_utf8(std::string_view text) { return utf8_size(text) == text.size(); }

// is_printable answers whether a character may reach a terminal as it is. Not so are control characters (C0, DEL, C1),
// characters that change the direction or are invisible, separators of lines, private and non-characters.
bool is_printable(uint32_t code_point);

// printable gives `text` with everything escaped that may not reach a terminal: characters as \u{202e}, octets that are
// not UTF-8 as \xff, and the backslash as \\.
std::string printable(std::string_view text);

// printable_source is the same for a line of a text file, where tabs and backslashes stay as they are.
std::string printable_source(std::string_view text);

// in_quotes gives the front of a text, made printable, between quotes: enough of it to be found again in a message.
std::string in_quotes(std::string_view text);

// "1 octet", "2 octets".
std::string counted(uint64_t count, const char* what);

}  // namespace zr::json
