// Why octets are no encoding of a record: where, what, why.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "asn1/envelope.h"
#include "asn1/record/registry.h"

namespace zr::json {

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

}  // namespace zr::json
