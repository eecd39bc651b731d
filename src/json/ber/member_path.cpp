#include "json/ber/member_path.h"

#include <charconv>
#include <system_error>

#include "json/base/members.h"
#include "json/base/suggest.h"
#include "json/base/text.h"

namespace zr::json {

namespace {

const field* member_named(const record_type& type, std::string_view name) {
    for (const field& member : type)
        if (has_member(member.value) && name == member.name) return &member;
    return nullptr;
}

std::string no_member(const record_type& type, std::string_view name) {
    std::vector<std::string_view> names;
    for (const field& member : type)
        if (has_member(member.value)) names.push_back(member.name);
    return std::string(type.name) + " has no member " + in_quotes(name) + suggestion(name, names);
}

// The index between brackets at the end of a step, which is taken off; false when there is none that can be read.
bool take_index(std::string_view& step, uint32_t& index) {
    const size_t bracket = step.find('[');
    index = path_step::every;
    if (bracket == step.npos) return true;
    const char* const end = step.data() + step.size();
    const auto [behind, fault] = std::from_chars(step.data() + bracket + 1, end, index);
    step.remove_suffix(step.size() - bracket);
    return fault == std::errc() && end - behind == 1 && *behind == ']' && index != path_step::every;
}

}  // namespace

bool read_path(std::string_view text, const record_type& type, member_path& path, std::string& message) {
    path.clear();
    const record_type* record = &type;
    for (bool more = true; more;) {
        const size_t dot = text.find('.');
        const std::string_view whole = text.substr(0, dot);
        more = dot != text.npos;
        text.remove_prefix(more ? dot + 1 : text.size());
        std::string_view name = whole;
        uint32_t index = 0;
        const bool has_index = take_index(name, index);
        const field* const member = member_named(*record, name);
        if (member == nullptr)
            message = no_member(*record, name);
        else if (!has_index)
            message = in_quotes(whole) + " is not NAME or NAME[INDEX]";
        else if (index != path_step::every && !is_sequence_of(*member))
            message = in_quotes(name) + " is no list: it takes no index";
        else if (more && member->record == nullptr)
            message = in_quotes(name) + " is no record: it has no members";
        else {
            path.push_back({record, member, index});
            record = member->record;
            continue;
        }
        return false;
    }
    return true;
}

}  // namespace zr::json
