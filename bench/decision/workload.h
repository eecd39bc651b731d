// An extended-decision request: a chain of 3 principals, each with 4 identities and a list of 5 attributes, and two
// more lists of 5 attributes.
#pragma once

#include "base_idls/azn_remote_authz_asn.h"
#include "bench/attrlist/workload.h"
#include "bench/uuid/workload.h"

namespace bench {

struct decision_workload {
    using structure = azn_decision_ext_in_s_t;
    static constexpr const char* name = "decision";

    static sec_id_t make_id(builder& make) { return {make_uuid(make), make.text(6, 24)}; }

    static azn_decision_ext_in_s_t make(builder& make) {
        azn_decision_ext_in_s_t request{};
        request.chain = {make.text("user-registry"), 3, make.array<yvprincipal_s_t*>(3)};
        for (uint32_t i = 0; i < request.chain.count; ++i) {
            yvprincipal_s_t* principal = request.chain.principals[i] = make.array<yvprincipal_s_t>(1);
            principal->int_a = static_cast<int32_t>(make.between(1, 3));
            principal->pa = make.array<sec_id_pa_t>(1);
            *principal->pa = {make_id(make), 4, make.array<sec_id_t>(4)};
            for (uint32_t j = 0; j < principal->pa->count; ++j)
                principal->pa->ids[j] = make_id(make);
            principal->int_b = static_cast<int32_t>(make.number(100000));
            principal->ext = make.array<attrlist_s_t>(1);
            *principal->ext = make_attribute_list(make, 5, 2);
        }
        request.str_a = make.text("/company/web/server-7/payroll/reports/2024/december");
        request.str_b = make.text("read");
        request.ext = make_attribute_list(make, 5, 2);
        request.ext2 = make_attribute_list(make, 5, 2);
        return request;
    }
};

}  // namespace bench
