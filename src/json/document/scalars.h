// What a value that is no record is in JSON, for reading, writing and messages: a kind of value is a case in some
// functions of scalars.cpp, and nothing elsewhere in this room.
#pragma once

#include <string>

#include "json/base/members.h"
#include "json/base/output.h"
#include "json/document/events.h"

namespace zr::json {

// In a message: "expected " and this.
std::string describe_scalar(const field& member);

// Puts the value that an event is into the member; when it does not fit, false and what to say about it. Throws
// std::bad_alloc.
bool read_scalar(const json_event& event, member_filler& to, std::string& message);

// Whether the value may also stand as {"hex": "..."}; reads what stands behind "hex", and describes it.
bool has_hex_form(const field& member);
bool read_hex_form(const json_event& event, member_filler& to, std::string& message);
const char* describe_hex_form();

// What a member of a structure is when the JSON does not name it, where zero octets are not it: texts are empty. Throws
// std::bad_alloc.
void add_missing_scalar(member_filler& to);

// Writes the value of the member at `value`, which is null for one that is absent.
void write_scalar(output& out, const field& member, const void* structure, const void* value, bool spaced);

// The same from the contents of an element; false when the library would not write them so. Octets that are absent have
// none.
bool write_contents(output& out, const field& member, const unsigned char* contents, size_t length, bool spaced);

}  // namespace zr::json
