// Where and why octets are no encoding of a record.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zr {

// What was to be read where a decode stopped.
enum class expectation : uint8_t {
    value,            // a value with the universal tag that `tag` says: SEQUENCE for a record or a list
    end_of_sequence,  // nothing: the SEQUENCE's last member was read
    end_of_contents,  // the octets 00 00 of an indefinite length
    fewer_elements,   // nothing wrong with the octets, but the list has more elements than its count can hold
    canonical_form,   // the octets that an encode writes for this value
};

// Where a decode stopped and why.
struct refusal {
    int status = 0;               // what the entry points answer
    uint32_t offset = 0;          // of the first octet that does not fit
    uint32_t left = 0;            // octets from there to the end of what encloses it
    expectation expected{};       // there
    unsigned char tag = 0;        // of an expected value (X.680 8.4)
    const char* count_name = "";  // of fewer_elements: the counting member
    // The way to the member that was to be read, such as "attrs[3].name"; empty for the record itself. Of a long way
    // the middle is left out.
    char path[320];

    // Nothing is found. Only the first octet of the path is written: it is long beside what else a small decode does.
    refusal() { path[0] = '\0'; }
    // Finds nothing any more.
    void clear() {
        status = 0;
        offset = left = 0;
        expected = {};
        tag = 0;
        count_name = "";
        path[0] = '\0';
    }
};

}  // namespace zr
