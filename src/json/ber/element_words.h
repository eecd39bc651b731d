// What is said of an element of an encoding, wherever it is shown.
#pragma once

#include <cstdint>
#include <string>

#include "json/base/output.h"
#include "json/base/secrets.h"
#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"
#include "json/ber/value.h"

namespace zr::json {

// Its type: "SEQUENCE OF", "[APPLICATION 3]".
std::string type_words(const ber_item& item, const record_place& place);

// Writes the value of an element that opens nothing, and of a uint32_t, which goes out as the signed number of its
// bits, that one too. Nothing is written where there are no contents.
void write_element_value(output& out, const ber_item& item, const record_place& place, const unsigned char* contents,
                         value_size size = value_size::cut);

// What is wrong with an element by itself, and as what it is to the record; empty when nothing is.
std::string damage_words(const ber_item& item, const unsigned char* contents);
std::string misfit_words(const ber_item& item, const record_place& place);

// secret_guard follows a walk and tells whose contents are not to be shown: those of a secret member and of the
// segments that it consists of. Where a record is not as it is to be, what is no member may be a secret too.
class secret_guard {
public:
    // Without a record nothing is hidden.
    secret_guard(const record_type* record, secret_values secrets)
        : record_(secrets == secret_values::shown ? nullptr : record) {}

    // To be asked for every element in turn.
    bool hides(const ber_item& item, const record_place& place);

private:
    const record_type* record_;
    size_t hidden_depth_ = SIZE_MAX;  // of the member that is hidden with what is in it
};

}  // namespace zr::json
