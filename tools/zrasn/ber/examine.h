// Where and why octets are no encoding of a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "asn1/record/registry.h"

namespace zr::tool {

// What was to be read where a decode stopped.
enum class expectation : uint8_t {
    sequence,         // a SEQUENCE: a record or a list
    integer,          // an INTEGER
    utf8_string,      // a UTF8String
    octet_string,     // an OCTET STRING
    end_of_sequence,  // nothing: the SEQUENCE's last member was read
    end_of_contents,  // the octets 00 00 of an indefinite length
    fewer_elements,   // nothing wrong with the octets, but the list has more elements than its count can hold
};

struct refusal {
    int status = 0;               // what the entry points answer
    size_t offset = 0;            // of the first octet that does not fit
    size_t left = 0;              // octets from there to the end of what encloses it
    expectation expected{};       // there
    const char* count_name = "";  // of fewer_elements: the counting member
    std::string path;             // of the member that was to be read; empty for the record itself
};

// examine reads an encoding without its envelope as the record's decode does. Returns the status that decode answers;
// when that is not 0, `found` says where and why. It works with a stack of its own, so that any depth will do.
int examine(const record_type& type, const unsigned char* octets, size_t size, refusal& found);

}  // namespace zr::tool
