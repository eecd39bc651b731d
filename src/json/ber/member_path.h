// The way to a member of a record, as reports and "zrasn diff" write it: "entries[0].id.name".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "asn1/record/record_type.h"

namespace zr::json {

// One member on the way. Of a list or slots the element with the index, or, where the way has none, every one.
struct path_step {
    static constexpr uint32_t every = UINT32_MAX;

    const record_type* record;  // that has the member
    const field* member;
    uint32_t index;

    bool leads_to(const field& other, uint32_t at) const { return member == &other && (index == every || index == at); }
};

// At least one step; all but the last lead to records.
using member_path = std::vector<path_step>;

// Reads a path into a record. False when the record has no such member: `message` says why, fit for a terminal.
bool read_path(std::string_view text, const record_type& type, member_path& path, std::string& message);

}  // namespace zr::json
