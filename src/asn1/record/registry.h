// All record types of the library, to walk and to search by name. Everything here is constant.
#pragma once

#include <string_view>

#include "asn1/record/record_type.h"

namespace zr {

// The records of one schema module, in the module's order.
struct record_module {
    const char* name;                   // such as "attrlist_asn"
    const record_type* const* records;  // each behind those it contains
    uint32_t record_count;              // at least one

    const record_type* const* begin() const { return records; }
    const record_type* const* end() const { return records + record_count; }
};

// All schema modules of the library; a record's module comes behind those of the records it contains.
struct module_list {
    const record_module* const* modules;  // each behind those it needs
    uint32_t module_count;                // at least one

    const record_module* const* begin() const { return modules; }
    const record_module* const* end() const { return modules + module_count; }
};

// modules gives all of them, in an order in which each stands behind those it needs.
[[nodiscard]] ZR_API module_list modules();

// find_record answers the record whose structure or binding class has the name; null when there is none.
[[nodiscard]] ZR_API const record_type* find_record(std::string_view name);

// The same among other modules: those of a program that describes records of its own (docs/adding-a-record.md).
[[nodiscard]] ZR_API const record_type* find_record(module_list among, std::string_view name);

}  // namespace zr
