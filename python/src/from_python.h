// A value of Python as the structure of a record: what the record's JSON may be, and octets as bytes.
#pragma once

#include <string>

#include "plans.h"

namespace zr::python {

// Why a value is no record.
struct value_error {
    std::string path;          // of the member, such as "attrs[3].name"; empty for the record itself
    std::string message;       // "found ..., expected ..."; no secret's value
    bool is_redacted = false;  // "***" stands for a secret
};

// from_python fills a zeroed structure, with blocks from malloc that the record's free function releases, after a
// refusal too. True on success. Runs no code of Python's, does not recurse, and `work` becomes the octets of the texts
// that it took. Throws std::bad_alloc.
bool from_python(const record_plan& plan, PyObject* value, void* structure, value_error& error, size_t& work);

}  // namespace zr::python
