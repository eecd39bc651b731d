#include "ber/record_guide.h"

#include "base/path.h"

namespace zr::tool {

namespace {

bool is_record(field_kind kind) { return kind == field_kind::nested || kind == field_kind::optional_nested; }

bool holds_elements(field_kind kind) {
    switch (kind) {
        case field_kind::list_of_records:
        case field_kind::list_of_pointers:
        case field_kind::list_of_texts:
        case field_kind::list_of_integers:
        case field_kind::slots:
            return true;
        default:
            return false;
    }
}

constexpr uint64_t tag_integer = 2, tag_octets = 4, tag_null = 5, tag_text = 12, tag_sequence = 16;

uint64_t tag_of(field_kind kind) {
    switch (kind) {
        case field_kind::integer:
            return tag_integer;
        case field_kind::text:
            return tag_text;
        case field_kind::octets:
        case field_kind::fixed_octets:
            return tag_octets;
        default:
            return tag_sequence;
    }
}

bool is_element_of(field_kind list, const ber_item& item) {
    switch (list) {
        case field_kind::list_of_texts:
            return item.is_universal(tag_text);
        case field_kind::list_of_integers:
            return item.is_universal(tag_integer);
        case field_kind::slots:
            return item.is_universal(tag_null) || item.is_universal(tag_sequence);
        default:
            return item.is_universal(tag_sequence);
    }
}

}  // namespace

bool record_place::is_list() const { return what == role::member && holds_elements(member->kind); }

bool record_place::is_integer() const {
    return (what == role::member && member->kind == field_kind::integer) ||
           (what == role::element && member->kind == field_kind::list_of_integers);
}

const char* notation_of(field_kind kind) {
    switch (kind) {
        case field_kind::integer:
            return "INTEGER";
        case field_kind::text:
            return "UTF8String";
        case field_kind::octets:
        case field_kind::fixed_octets:
            return "OCTET STRING";
        case field_kind::nested:
        case field_kind::optional_nested:
            return "SEQUENCE";
        default:
            return "SEQUENCE OF";
    }
}

record_place record_guide::place_in(level& top, const ber_item& item) {
    record_place place;
    if (top.what == inside::segments) {
        place.what = record_place::role::segment;
        place.member = top.next;
    } else if (top.what == inside::list) {
        place.member = top.next;
        place.index = top.index++;
        const bool fits = is_element_of(top.next->kind, item);
        place.what = fits ? record_place::role::element : record_place::role::unexpected_element;
        if (fits && item.is_universal(tag_sequence)) place.record = top.next->nested;
    } else if (top.what == inside::record) {
        while (top.next != top.type->end() && top.next->kind == field_kind::optional_nested &&
               !item.is_universal(tag_sequence))
            ++top.next;
        if (top.next == top.type->end()) {
            if (!top.excess) place.what = record_place::role::unexpected;
            top.excess = true;
            return place;
        }
        place.member = top.next++;
        const bool fits = item.is_universal(tag_of(place.member->kind));
        place.what = fits ? record_place::role::member : record_place::role::unexpected;
        if (fits && is_record(place.member->kind)) place.record = place.member->nested;
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

}  // namespace zr::tool
