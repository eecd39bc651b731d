// An audit event with a tree of elements, 4 levels deep with a fan-out of 4, 64 octets of data and up to 2 attributes
// in each of its 340 elements.
#pragma once

#include "base_idls/ejauditidl_asn.h"
#include "bench/harness/builder.h"

namespace bench {

struct audit_workload {
    using structure = ejauditevent_s_t;
    static constexpr const char* name = "audit";

    static ejauditelement_s_t make_element(builder& make, int levels_below) {
        ejauditelement_s_t element{};
        element.name = make.text(6, 20);
        element.length = 64;
        element.data = make.octets(element.length);
        element.attr_count = make.number(3);
        element.attrs = make.array<ejauditattribute_s_t>(element.attr_count);
        for (uint32_t i = 0; i < element.attr_count; ++i) {
            ejauditattribute_s_t& attribute = element.attrs[i];
            attribute = {make.text(4, 16), make.between(4, 24), nullptr};
            attribute.data = make.octets(attribute.length);
        }
        if (levels_below != 0) {
            element.element_count = 4;
            element.elements = make.array<ejauditelement_s_t>(4);
            for (uint32_t i = 0; i < element.element_count; ++i)
                element.elements[i] = make_element(make, levels_below - 1);
        }
        return element;
    }

    static ejauditevent_s_t make(builder& make) {
        ejauditevent_s_t event{3, make.text("resource-access"), 70000, 4, make.array<ejauditelement_s_t>(4)};
        for (uint32_t i = 0; i < event.element_count; ++i)
            event.elements[i] = make_element(make, 3);
        return event;
    }
};

}  // namespace bench
