// Which record octets are, where nobody has said it.
#pragma once

#include "asn1/record/registry.h"
#include "base/color.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/secrets.h"
#include "json/ber/record_match.h"

namespace zr::tool {

// What the choice, and messages about a refusal, go by.
struct choice_options {
    unsigned version;
    color_mode color;
    secret_values secrets;
};

// refuse_all says that octets fit none of the records, which comes nearest, if one does, and why it does not fit.
void refuse_all(const octets_input& in, const choice_options& options);

// record_chooser takes the record that the octets tell, and says on standard error which, once for each that follows
// another.
class record_chooser {
public:
    explicit record_chooser(const choice_options& options) : options_(options) {}

    // Null, after a message, when several fit, which are listed, or none.
    const record_type* choose(const octets_input& in);

private:
    const choice_options options_;
    const record_type* last_ = nullptr;
};

// The records whose shape the octets have; what refuses octets as such, without a record, is told by refuse_all.
record_match match_input(const octets_input& in);
// Whether a decode refuses the envelope, whatever the record.
bool has_bad_envelope(const octets_input& in, unsigned version);

}  // namespace zr::tool
