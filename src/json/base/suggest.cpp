#include "json/base/suggest.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "asn1/record/registry.h"

namespace zr::json {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

size_t distance(std::string_view left, std::string_view right) {
    std::vector<size_t> before(right.size() + 1), last(right.size() + 1), row(right.size() + 1);
    for (size_t k = 0; k <= right.size(); ++k)
        last[k] = k;
    for (size_t i = 1; i <= left.size(); ++i) {
        row[0] = i;
        for (size_t k = 1; k <= right.size(); ++k) {
            const bool same = lower(left[i - 1]) == lower(right[k - 1]);
            row[k] = std::min({last[k] + 1, row[k - 1] + 1, last[k - 1] + (same ? 0 : 1)});
            const bool swapped = i > 1 && k > 1 && lower(left[i - 1]) == lower(right[k - 2]) &&
                                 lower(left[i - 2]) == lower(right[k - 1]);
            if (swapped) row[k] = std::min(row[k], before[k - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[right.size()];
}

std::string_view without_dashes(std::string_view word) {
    return word.substr(std::min(word.find_first_not_of('-'), word.size()));
}

}  // namespace

std::string_view nearest(std::string_view word, const std::vector<std::string_view>& candidates) {
    constexpr size_t longest = 64;  // nobody mistypes more
    std::string_view best;
    const std::string_view stem = without_dashes(word);
    size_t least = (std::min<size_t>(stem.size(), 8) + 1) / 3 + 1;  // closer than this; of one letter only the case
    if (word.size() > longest) return best;
    for (std::string_view candidate : candidates) {
        const size_t there = distance(stem, without_dashes(candidate));
        if (there >= least || there >= candidate.size()) continue;
        least = there;
        best = candidate;
    }
    return best;
}

std::string suggestion(std::string_view word, const std::vector<std::string_view>& candidates) {
    const std::string_view found = nearest(word, candidates);
    return found.empty() ? std::string() : "; did you mean \"" + std::string(found) + "\"?";
}

std::string record_suggestion(std::string_view word, std::vector<std::string_view> others) {
    constexpr std::string_view ending = "_s_t";
    for (std::string_view name : record_names()) {
        others.push_back(name);
        const size_t stem = name.size() - std::min(name.size(), ending.size());
        if (name.substr(stem) == ending) others.push_back(name.substr(0, stem));
    }
    return suggestion(word, others);
}

std::vector<std::string_view> record_names() {
    std::vector<std::string_view> names;
    for (const record_module* module : modules())
        for (const record_type* type : *module)
            names.push_back(type->name);
    return names;
}

}  // namespace zr::json
