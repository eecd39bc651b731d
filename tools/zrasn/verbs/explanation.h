// Octets that a record's decode refused: where, what, why.
#pragma once

#include <string>

#include "base/color.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/secrets.h"
#include "json/ber/explanation.h"
#include "json/ber/losses.h"

namespace zr::tool {

// "FILE:OFFSET: PATH: what was found, what was expected (name, number)", the octets around with a caret, and a hint
// when the input looks like something else; all to standard error. The path of the record itself is its name. Without a
// type no record is named. The octets of a record with secrets are only shown when `secrets` are.
void print_explanation(const octets_input& in, const record_type* type, const explanation& refused, color_mode color,
                       secret_values secrets);

// What a record that was decoded has, and what is made of it has not.
void print_loss(const std::string& label, const loss& lost);

// What the input looks like instead of octets, with what to do about it; empty when it looks like nothing else.
std::string input_hint(const octets_input& in, const record_type* type);

}  // namespace zr::tool
