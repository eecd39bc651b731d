// A list of 2,000 objects with 256-octet bodies.
#pragma once

#include "base_idls/yvobj_asn.h"
#include "bench/attrlist/workload.h"

namespace bench {

inline yvobj_list_s_t make_objects(builder& make, uint32_t count) {
    yvobj_list_s_t list{count, make.array<yvobj_t>(count), make_attribute_list(make, 2, 2)};
    for (uint32_t i = 0; i < list.count; ++i)
        list.objs[i] = {make.text(16, 48), static_cast<int32_t>(make.number(16)),
                        static_cast<int32_t>(make.number(100000)), 256, make.octets(256)};
    return list;
}

struct objects_workload {
    using structure = yvobj_list_s_t;
    static constexpr const char* name = "objects";
    static yvobj_list_s_t make(builder& make) { return make_objects(make, 2000); }
};

}  // namespace bench
