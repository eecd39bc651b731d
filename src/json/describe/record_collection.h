// Records in the order in which they are described: each behind those it contains.
#pragma once

#include <algorithm>
#include <vector>

#include "asn1/record/registry.h"

namespace zr::json {

// record_collection has the records asked for and what they contain, each once; nothing asked for is all that the
// library has.
class record_collection {
public:
    record_collection(const std::vector<const record_module*>& of_modules,
                      const std::vector<const record_type*>& of_records) {
        for (const record_module* module : of_modules)
            add(*module);
        for (const record_type* type : of_records)
            add(type);
        if (!of_modules.empty() || !of_records.empty()) return;
        for (const record_module* module : modules())
            add(*module);
    }

    auto begin() const { return records_.begin(); }
    auto end() const { return records_.end(); }

private:
    void add(const record_module& module) {
        for (const record_type* type : module)
            add(type);
    }
    void add(const record_type* type) {
        if (std::find(marked_.begin(), marked_.end(), type) != marked_.end()) return;
        marked_.push_back(type);
        for (const field& field : *type)
            if (field.record != nullptr) add(field.record);
        records_.push_back(type);
    }

    std::vector<const record_type*> marked_;
    std::vector<const record_type*> records_;
};

}  // namespace zr::json
