#include "json/ber/record_match.h"

#include "json/ber/scanner.h"

namespace zr::json {

namespace {

// Elements that begin before the octet; no more than `most` are counted.
size_t elements_before(size_t offset, const unsigned char* data, size_t size, size_t most) {
    ber_scanner scanner(data, size);
    size_t count = 0;
    for (ber_item item; count != most && scanner.next(item) && item.offset < offset;)
        count += item.kind == ber_kind::element ? 1 : 0;
    return count;
}

}  // namespace

std::vector<const record_type*> known_records() {
    std::vector<const record_type*> known;
    for (const record_module* module : modules())
        known.insert(known.end(), module->begin(), module->end());
    return known;
}

record_match match_records(const unsigned char* data, size_t size, const std::vector<const record_type*>& among) {
    constexpr size_t many_elements = 5, many_records = 5;
    record_match match;
    size_t furthest = 0;
    for (const record_type* type : among) {
        refusal refused;
        if (type->examine(data, size, refused) == 0) {
            match.fitting.push_back(type);
            continue;
        }
        if (refused.offset < furthest) continue;
        if (refused.offset > furthest) match.nearest.clear();
        furthest = refused.offset;
        match.nearest.push_back(type);
    }
    match.is_no_sequence = match.fitting.empty() && furthest == 0;
    const bool near =
        furthest >= size - size / 2 || elements_before(furthest, data, size, many_elements) == many_elements;
    if (!match.fitting.empty() || match.is_no_sequence || !near || match.nearest.size() > many_records)
        match.nearest.clear();
    return match;
}

}  // namespace zr::json
