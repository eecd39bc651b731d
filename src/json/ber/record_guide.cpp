#include "json/ber/record_guide.h"

#include "json/base/path.h"
#include "json/ber/asn1_types.h"

namespace zr::json {

namespace {

bool is_value(const field& member, const ber_item& item) {
    return item.is_universal(tag_of(member.value)) || (member.held == holding::slots && item.is_universal(tag_null));
}

}  // namespace

bool record_place::is_list() const { return what == role::member && is_sequence_of(*member); }

bool record_place::is_integer() const {
    return (what == role::element || (what == role::member && !is_list())) && member->value == value_kind::integer;
}

record_place record_guide::place_in(level& top, const ber_item& item) {
    record_place place;
    if (top.what == inside::segments) {
        place.what = record_place::role::segment;
        place.member = top.next;
    } else if (top.what == inside::list) {
        place.member = top.next;
        place.index = top.index++;
        const bool fits = is_value(*top.next, item);
        place.what = fits ? record_place::role::element : record_place::role::unexpected_element;
        if (fits && item.is_universal(tag_sequence)) place.record = top.next->record;
    } else if (top.what == inside::record) {
        while (top.next != top.type->end() && top.next->held == holding::optional && !is_value(*top.next, item))
            ++top.next;
        if (top.next == top.type->end()) {
            if (!top.excess) place.what = record_place::role::unexpected;
            top.excess = true;
            return place;
        }
        place.member = top.next++;
        const bool is_list = is_sequence_of(*place.member);
        const bool fits = is_list ? item.is_universal(tag_sequence) : is_value(*place.member, item);
        place.what = fits ? record_place::role::member : record_place::role::unexpected;
        if (fits && !is_list) place.record = place.member->record;
    }
    return place;
}

record_place record_guide::visit(const ber_item& item) {
    record_place place;
    if (levels_.empty()) {
        if (type_ != nullptr && !seen_) {
            const bool fits = item.is_universal(tag_sequence);
            place.what = fits ? record_place::role::record : record_place::role::unexpected;
            if (fits) place.record = type_;
        }
        seen_ = true;
    } else {
        place = place_in(levels_.back(), item);
    }
    const bool lost = item.damage == ber_damage::too_long;
    if (lost) lose_rest();
    if (!item.opens()) return place;
    level inner{nullptr, nullptr, 0, inside::unknown, lost, false};
    if (place.record != nullptr) {
        inner = {place.record, place.record->begin(), 0, inside::record, lost, false};
    } else if (place.is_list()) {
        inner = {nullptr, place.member, 0, inside::list, lost, false};
    } else if (place.what == record_place::role::member || place.what == record_place::role::element ||
               place.what == record_place::role::segment) {
        inner = {nullptr, place.member, 0, inside::segments, lost, false};
    }
    levels_.push_back(inner);
    return place;
}

std::string record_guide::path() const {
    // A level names what its last element is: the member before `next`, the index before `index`.
    constexpr size_t ends = 40;
    path_builder path;
    const auto add = [&path](const level& open) {
        if (open.what == inside::record && open.next != open.type->begin())
            path.member((open.next - 1)->name);
        else if (open.what == inside::list && open.index != 0)
            path.element(open.index - 1);
    };
    if (levels_.size() <= 2 * ends) {
        for (const level& open : levels_)
            add(open);
        return path.text();
    }
    for (size_t i = 0; i < ends; ++i)
        add(levels_[i]);
    const std::string front = path.text();
    path = path_builder();
    for (size_t i = levels_.size() - ends; i < levels_.size(); ++i)
        add(levels_[i]);
    return front + " ... " + path.text();
}

}  // namespace zr::json
