// What somebody may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zr::json {

// nearest answers the candidate that is closest to `word` by edit distance (a swap of neighbours counts once, case not
// at all); empty when none is close.
std::string_view nearest(std::string_view word, const std::vector<std::string_view>& candidates);

// "; did you mean \"...\"?", or nothing.
std::string suggestion(std::string_view word, const std::vector<std::string_view>& candidates);

// The same among the record types, with and without their ending _s_t, and other names.
std::string record_suggestion(std::string_view word, std::vector<std::string_view> others = {});

// The names of all record types.
std::vector<std::string_view> record_names();

}  // namespace zr::json
