// What of an input a decode does not give, though it succeeds.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "asn1/record/registry.h"

namespace zr::json {

struct loss {
    size_t offset;     // from the front of the input, header included
    std::string path;  // of the member; empty for the record itself
    std::string what;
};

// find_losses reports them for an encoding that decodes as `type` into `contents`: what stands behind a zero octet of a
// text, and octets behind the record. The first `header` octets are the envelope's header; 0 when there is none. Costs
// a look at each header when there are none.
void find_losses(const unsigned char* data, size_t size, size_t header, const record_type& type, void* contents,
                 const std::function<void(const loss&)>& report);

}  // namespace zr::json
