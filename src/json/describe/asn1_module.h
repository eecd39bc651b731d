// The records as an ASN.1 module (X.680) for other compilers.
#pragma once

#include <vector>

#include "asn1/record/registry.h"
#include "json/base/output.h"

namespace zr::json {

// Everything asked for, and what that contains, goes into one module: asn1c and Erlang's compiler want imported modules
// in files of their own. Nothing asked for is all that the library has.
void write_asn1_module(output& out, const std::vector<const record_module*>& of_modules,
                       const std::vector<const record_type*>& of_records);

}  // namespace zr::json
