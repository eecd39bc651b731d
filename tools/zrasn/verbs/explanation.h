// Octets that a record's decode refused: where, what, why.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "asn1/record/registry.h"
#include "base/color.h"
#include "base/secrets.h"
#include "input/input.h"

namespace zr::tool {

struct explanation {
    int status = 0;
    uint64_t offset = 0;      // of the first octet that does not fit, from the front of the input, header included
    std::string path;         // of the member; empty for the record itself
    const char* reason = "";  // zr::decode_report::reason
    std::string message;      // "found ..., expected ..."; fit for a terminal
};

// explain finds out what made a decode of these octets, with or without an envelope's header of the version, as `type`
// end with `status`.
explanation explain(const unsigned char* data, size_t size, const record_type& type, int status,
                    unsigned version = envelope_version);

// "FILE:OFFSET: PATH: what was found, what was expected (name, number)", the octets around with a caret, and a hint
// when the input looks like something else; all to standard error. The path of the record itself is its name. Without a
// type no record is named. The octets of a record with secrets are only shown when `secrets` are.
void print_explanation(const octets_input& in, const record_type* type, const explanation& refused, color_mode color,
                       secret_values secrets);

}  // namespace zr::tool
