// The same values in forms that BER permits and the library never writes.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace bench {

// How one value is written.
enum class form {
    shortest,
    long_length,        // with a leading zero octet in the length (X.690 8.1.3.5)
    indefinite_length,  // of a constructed value (X.690 8.1.3.6)
    segmented,          // a string in two parts (X.690 8.23.6, 8.14.3)
    short_segments,     // a string in parts of 16 octets
};

// Chooses the form of a value from its identifier octet.
using form_chooser = std::function<form(unsigned char identifier)>;

// in_other_forms writes the values of `encoding` again, each in the form that `choose` gives when asked in the order in
// which the values begin. `encoding` is one the library made, without the envelope.
std::string in_other_forms(std::string_view encoding, const form_chooser& choose);

}  // namespace bench
