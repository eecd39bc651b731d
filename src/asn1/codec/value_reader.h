// Reading single values from BER octets in any form, with the statuses, consumed octets and odd forms of the object
// tree: they follow zr_asn_object::asnread step by step.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/status.h"

namespace zr {

// input is a cursor over the octets of one level.
struct input {
    const unsigned char* at;
    const unsigned char* end;

    size_t left() const { return static_cast<size_t>(end - at); }
};

// A constructed value that has been entered: what its enclosing level has left behind it, unless the length is
// indefinite.
struct scope {
    uint32_t after;
    bool indefinite;
};

// The readers return 0 and move the cursor behind the value, or return a status and leave the cursor.

// enter_sequence steps over the header of a SEQUENCE and narrows the cursor to its contents; leave_sequence checks that
// the contents end here and widens it to the enclosing level. at_end tells whether they end here.
int enter_sequence(input& in, scope& entered);
int leave_sequence(input& in, const scope& entered);
// Steps over a text or an octet string in any form. At least one octet must be there.
bool skip_string(input& in);
// Steps over the header of any value of definite length and narrows the cursor to its contents.
bool step_into_definite(input& in);
bool at_end(const input& in, const scope& entered);

// Whether a value with the universal tag is next, in whatever form.
bool next_is(const input& in, unsigned char tag);
// Steps over a NULL, if there is one.
bool skip_null(input& in);

// The contents of a value with a universal tag whose type has the primitive form only: what they say, and whether there
// may be so many, the caller decides.
int read_primitive(input& in, unsigned char tag, input& contents);
// Contents that fit no 32 bits give 0; read_fitting_integer returns 275063193 then.
int read_integer(input& in, int32_t& value);
int read_fitting_integer(input& in, int32_t& value);
// The text gets a malloc block with a terminating zero. It is null when memory is out, and that is no failure.
int read_text(input& in, char*& text);
// The same for a text that is marked: in its block the place for the mark comes first, then the text.
struct text_mark {
    uint32_t at;      // where its value lies in the octets that are decoded
    uint32_t length;  // with all zero octets
};
int read_marked_text(input& in, char*& block, uint32_t at);
// A text that is stored with its zero octet (quick_stored_text in asn1/codec/quick_reader.h). Throws when memory is
// out.
int read_stored_text(input& in, char*& text);
// The octets get a malloc block, an empty string none. 275062885 when memory is out.
int read_octets(input& in, unsigned char*& data, uint32_t& length);
// `size` octets at most go there; the rest of it is zero.
int read_fixed_octets(input& in, unsigned char* to, uint32_t size);

// How many elements the contents have, as far as their headers tell: none is looked into.
ZR_CODEC_API uint32_t count_elements(const unsigned char* at, const unsigned char* end);

// They keep the throw out of the readers.
[[noreturn]] ZR_CODEC_API void throw_memory_error(const char* file);
[[noreturn]] ZR_CODEC_API void throw_optional_memory_error(const char* file);
[[noreturn]] void throw_stored_text_memory_error();
[[noreturn]] void throw_body_memory_error();

}  // namespace zr
