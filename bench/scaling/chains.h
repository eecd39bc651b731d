// Records that contain themselves once on each level: the deepest there are for their number of values.
#pragma once

#include "base_idls/ejauditidl_asn.h"
#include "base_idls/namevalue_asn.h"
#include "bench/harness/builder.h"

namespace bench {

// An element in an array of one element on each level.
inline ejauditelement_s_t make_element_chain(builder& make, size_t levels) {
    ejauditelement_s_t outermost{}, *element = &outermost;
    for (;;) {
        element->name = make.text("element");
        element->length = 16;
        element->data = make.octets(16);
        if (--levels == 0) return outermost;
        element->element_count = 1;
        element = element->elements = make.array<ejauditelement_s_t>(1);
    }
}

// A node behind an array of one pointer on each level.
inline namevalue_s_t make_node_chain(builder& make, size_t levels) {
    namevalue_s_t outermost{}, *node = &outermost;
    for (;;) {
        node->name = make.text("node");
        node->value_count = 1;
        node->values = make.array<char*>(1);
        node->values[0] = make.text("value");
        if (--levels == 0) return outermost;
        node->child_count = 1;
        node->children = make.array<namevalue_s_t*>(1);
        node = node->children[0] = make.array<namevalue_s_t>(1);
    }
}

}  // namespace bench
