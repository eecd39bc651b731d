// Other encodings of the same value: BER permits many forms (X.690 8.1.3, 8.14, 8.23) where the library writes one.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace zr_test {

using octets = std::vector<unsigned char>;

// One value: its identifier octet, and its contents or the values inside.
struct ber_value {
    unsigned char identifier = 0;
    octets contents;                // of a primitive value
    std::vector<ber_value> inside;  // of a constructed one

    bool constructed() const { return (identifier & 0x20) != 0; }
};

// The tree of values of an encoding with one identifier octet each and definite lengths, or of any length when
// `indefinite`. Throws on anything else.
ber_value parse_ber(const octets& encoding, bool indefinite = false);

// Identifier, shortest length, contents.
octets element(unsigned char identifier, const octets& contents);
octets operator+(octets left, const octets& right);

// What rewrite_ber may do to each value.
struct rewriting {
    bool long_lengths = true;        // more length octets than needed
    bool indefinite_lengths = true;  // of constructed values
    bool segments = true;            // strings cut up, nested in each other, of any of these forms again
    // Forms that are no BER but that the readers give a meaning: an identifier of many octets whose tag number wraps
    // around to the expected one. Seven octets of each count without being there, so as many follow the encoding.
    bool wrapped_tags = false;
};

octets rewrite_ber(const ber_value& value, std::mt19937& random, const rewriting& permitted = {});

}  // namespace zr_test
