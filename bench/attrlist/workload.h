// An attribute list of 10 attributes with 3 values each, about 1.7 kB: the extension that most records carry.
#pragma once

#include "base_idls/attrlist_asn.h"
#include "bench/harness/builder.h"

namespace bench {

inline attrlist_s_t make_attribute_list(builder& make, uint32_t attributes, uint32_t values) {
    static const char* const names[] = {"department",    "cost-center", "clearance-level", "group-membership",
                                        "email",         "office",      "session-index",   "authentication-method",
                                        "employee-type", "valid-until"};
    attrlist_s_t list{attributes, make.array<attr_s_t>(attributes)};
    for (uint32_t i = 0; i < attributes; ++i) {
        attr_s_t& attr = list.attrs[i];
        attr = {make.text(names[i % 10]), values, make.array<value_s_t>(values)};
        for (uint32_t j = 0; j < values; ++j) {
            value_s_t& value = attr.values[j];
            value.type = static_cast<int32_t>(make.between(1, 4));
            value.str = make.text(8, 32);
            value.length = make.between(8, 32);
            value.data = make.octets(value.length);
        }
    }
    return list;
}

struct attrlist_workload {
    using structure = attrlist_s_t;
    static constexpr const char* name = "attrlist";
    static attrlist_s_t make(builder& make) { return make_attribute_list(make, 10, 3); }
};

}  // namespace bench
