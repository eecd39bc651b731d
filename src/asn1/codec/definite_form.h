// Records and lists of indefinite length, written again with definite lengths, so that the quick readers can read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "asn1/codec/quick_reader.h"
#include "asn1/codec/value_reader.h"

namespace zr {

// definite_form copies the record that octets begin with. Each SEQUENCE of indefinite length in it gets a length of
// four octets (X.690 8.1.3.5), and each that holds such a one; all else stays octet for octet. What the quick readers
// accept of the copy, the general reader accepts of the original, with the same values.
//
// One walk from header to header, whatever encloses which: time and room are linear, three octets at most for one.
class definite_form {
public:
    // `secret` octets are overwritten when the copy goes.
    explicit definite_form(bool secret) : secret_(secret) {}
    definite_form(const definite_form&) = delete;
    definite_form& operator=(const definite_form&) = delete;
    ~definite_form() { release(); }

    // False when nothing has an indefinite length, when the octets are refused or of a form that only the general
    // reader knows, and when there is no room for the copy. Throws zr_asn_memexception for `file`.
    bool write(octet_position at, octet_position end, const char* file);

    input copy() const { return {copy_, copy_ + length_}; }
    // Where the record ends in the original octets.
    octet_position behind() const { return behind_; }

private:
    unsigned char* grow(unsigned char* to, size_t more);
    void release();

    // Most messages are short: a block of their length would have the allocator tidy up first.
    unsigned char first_[8192];
    unsigned char* copy_ = first_;
    size_t length_ = 0;
    size_t room_ = sizeof first_;
    octet_position behind_ = nullptr;
    bool secret_;
};

}  // namespace zr
