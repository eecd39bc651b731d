// A record's structure as a value of Python: what json.loads makes of the record's JSON.
#pragma once

#include "plans.h"

namespace zr::python {

// How secrets are given.
struct secret_texts {
    PyObject* hidden;  // "***"
    PyObject* type;    // zrasn.Secret, when they are to be shown; else null
};

// to_python makes a dict, or of a UUID a text; of any depth, without recursion. Throws python_error and
// std::bad_alloc.
reference to_python(const record_plan& plan, const void* structure, const secret_texts& secrets);

}  // namespace zr::python
