#include "asn1/record/registry.h"

namespace zr {

const record_type* find_record(std::string_view name) { return find_record(modules(), name); }

const record_type* find_record(module_list among, std::string_view name) {
    for (const record_module* module : among) {
        for (const record_type* type : *module) {
            if (name == type->name || name == type->binding) return type;
        }
    }
    return nullptr;
}

}  // namespace zr
