// What is made once of every record, for all decodes and encodes: the keys of its dict. Nothing of it changes later.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "asn1/record/registry.h"
#include "reference.h"

namespace zr::python {

struct record_plan;

// A field that has a member.
struct member_plan {
    const field* member;
    reference key;              // interned
    const record_plan* record;  // of the values that are records, or null
};

// A record.
struct record_plan {
    const record_type* type;
    bool is_uuid;                      // it is a text, not a dict
    std::vector<member_plan> members;  // in the order of the fields
    reference blank;                   // a dict with all keys: a copy of it has room for all values

    // The member with the key, looked for from `expected` on, where most dicts have it; null where there is none.
    const member_plan* find(PyObject* key, size_t expected) const;
};

// plans has all records of the library.
class plans {
public:
    // Throws python_error and std::bad_alloc.
    plans();

    // By any name that zrasn_record_find takes; null, without a Python exception, where none has it.
    const record_plan* find(PyObject* name) const;
    const std::vector<std::unique_ptr<record_plan>>& all() const { return all_; }
    // Every object of Python that is held, for the collector of cycles.
    int visit_objects(visitproc visit, void* arg) const;

private:
    void add_name(std::string_view name, size_t index);

    std::vector<std::unique_ptr<record_plan>> all_;  // each behind those that it contains
    reference by_name_;                              // dict: a name to the index in all_
};

}  // namespace zr::python
