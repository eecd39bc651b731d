// An access-control list of 200 entries with 8 permissions each.
#pragma once

#include "base_idls/aclidl_asn.h"
#include "bench/attrlist/workload.h"
#include "bench/uuid/workload.h"

namespace bench {

struct acl_workload {
    using structure = acl_ext_s_t;
    static constexpr const char* name = "acl";

    static acl_ext_s_t make(builder& make) {
        acl_ext_s_t acl{make.text("default-web"), 200, make.array<acl_entry_s_t>(200), make_attribute_list(make, 2, 2)};
        for (uint32_t i = 0; i < acl.count; ++i) {
            acl_entry_s_t& entry = acl.entries[i];
            entry.permset = {8, make.array<int32_t>(8)};
            for (uint32_t j = 0; j < entry.permset.count; ++j)
                entry.permset.perms[j] = static_cast<int32_t>(make.number(1u << (8 * make.between(1, 3) - 1)));
            entry.int_a = static_cast<int32_t>(make.number(8));
            entry.id = {make_uuid(make), make.text(6, 24)};
        }
        return acl;
    }
};

}  // namespace bench
