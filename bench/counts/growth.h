// Octets of every shape that could make a decode take more than its share, at any size.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

struct shape {
    const char* name;
    bool refused;                        // for what stands at the end of the octets
    bool is_chain;                       // a namevalue_s_t; else an attrlist_s_t
    std::string (*make)(size_t octets);  // an envelope of about so many
};

// All shapes; the last has no name.
extern const shape shapes[];

}  // namespace bench
