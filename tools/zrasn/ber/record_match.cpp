#include "ber/record_match.h"

#include <utility>

namespace zr::tool {

record_match match_records(const unsigned char* data, size_t size) {
    constexpr size_t many_elements = 5, many_records = 5;
    record_match match;
    for (const record_module* module : modules()) {
        for (const record_type* type : *module) {
            mismatch found;
            if (!locate_mismatch(data, size, *type, found)) {
                match.fitting.push_back(type);
                continue;
            }
            if (!match.nearest.empty() && found.offset < match.wrong.offset) continue;
            if (match.nearest.empty() || found.offset > match.wrong.offset) {
                match.nearest.clear();
                match.wrong = std::move(found);
            }
            match.nearest.push_back(type);
        }
    }
    match.is_no_sequence = match.fitting.empty() && match.wrong.offset == 0;
    const bool near = match.wrong.offset >= size - size / 2 || match.wrong.elements >= many_elements;
    if (!match.fitting.empty() || match.is_no_sequence || !near || match.nearest.size() > many_records)
        match.nearest.clear();
    return match;
}

}  // namespace zr::tool
