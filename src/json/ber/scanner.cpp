#include "json/ber/scanner.h"

namespace zr::json {

const char* damage_text(ber_damage damage) {
    switch (damage) {
        case ber_damage::none:
            break;
        case ber_damage::tag_too_large:
            return "the tag number is too large to tell";
        case ber_damage::too_long:
            return "the contents run over the end";
        case ber_damage::indefinite_primitive:
            return "an indefinite length in the primitive form";
        case ber_damage::stray_end:
            return "end-of-contents octets where no indefinite length is open";
        case ber_damage::false_end:
            return "the tag of end-of-contents octets, but not 00 00";
        case ber_damage::identifier_cut:
            return "the identifier is cut off";
        case ber_damage::length_cut:
            return "the length is cut off";
        case ber_damage::length_reserved:
            return "the length octet ff means nothing";
        case ber_damage::no_length:
            return "contents without a length";
    }
    return "";
}

size_t ber_item::shortest_identifier() const {
    if (damage == ber_damage::tag_too_large) return identifier_size;
    size_t size = 1;
    if (tag >= 31)
        for (uint64_t rest = tag; rest != 0; rest >>= 7)
            ++size;
    return size;
}

size_t ber_item::shortest_length() const {
    size_t size = 1;
    if (!indefinite && declared >= 0x80)
        for (uint64_t rest = declared; rest != 0; rest >>= 8)
            ++size;
    return size;
}

// What is left of the innermost element whose end is known is given up; the indefinite lengths in it end with it.
bool ber_scanner::unreadable(ber_item& item, ber_damage damage) {
    item.kind = ber_kind::unreadable;
    item.damage = damage;
    item.constructed = item.indefinite = false;
    item.header = 0;
    item.length = open_.back().end - item.offset;
    at_ = open_.back().end;
    while ((open_.back().flags & is_indefinite) != 0)
        open_.pop_back();
    return true;
}

bool ber_scanner::next(ber_item& item) {
    while (at_ == open_.back().end) {
        const unsigned char flags = open_.back().flags;
        if ((flags & is_indefinite) != 0 && (flags & excused) == 0) {
            item = {};
            item.kind = ber_kind::missing_end;
            item.offset = at_;
            item.depth = open_.size() - 1;
            open_.pop_back();
            return true;
        }
        if (open_.size() == 1) return false;
        open_.pop_back();
    }
    item = {};
    item.offset = at_;
    item.depth = open_.size() - 1;
    const level& top = open_.back();
    if (data_[at_] == 0 && top.end - at_ >= 2 && data_[at_ + 1] == 0) {
        item.identifier_size = 1;
        item.header = 2;
        at_ += 2;
        if ((top.flags & is_indefinite) != 0) {
            item.kind = ber_kind::end_of_contents;
            open_.pop_back();
        } else {
            item.damage = ber_damage::stray_end;
        }
        return true;
    }
    if ((top.flags & has_no_length) != 0) return unreadable(item, ber_damage::no_length);
    return read_element(item);
}

bool ber_scanner::read_element(ber_item& item) {
    const unsigned char* at = data_ + at_;
    const unsigned char* const end = data_ + open_.back().end;
    item.cls = *at >> 6;
    item.constructed = (*at & 0x20) != 0;
    item.tag = *at & 0x1F;
    if (*at++ == 0) item.damage = ber_damage::false_end;
    if (item.tag == 0x1F) {
        item.tag = 0;
        do {
            if (at == end) return unreadable(item, ber_damage::identifier_cut);
            if (item.tag >> 57 != 0) item.damage = ber_damage::tag_too_large;
            item.tag = item.tag << 7 | (*at & 0x7F);
        } while ((*at++ & 0x80) != 0);
        if (item.damage == ber_damage::tag_too_large) item.tag = 0;
    }
    const size_t identifier = static_cast<size_t>(at - data_) - at_;
    item.identifier_size = static_cast<unsigned char>(identifier < 255 ? identifier : 255);

    if (at == end) return unreadable(item, ber_damage::length_cut);
    item.declared = *at++;
    if (item.declared == 0x80) {
        item.indefinite = true;
        item.declared = 0;
    } else if (item.declared > 0x80) {
        size_t count = item.declared & 0x7F;
        if (count == 0x7F) return unreadable(item, ber_damage::length_reserved);
        if (count > static_cast<size_t>(end - at)) return unreadable(item, ber_damage::length_cut);
        item.declared = 0;
        for (; count != 0; --count) {
            const bool overflows = item.declared >> 56 != 0;
            item.declared = overflows ? UINT64_MAX : item.declared << 8 | *at;
            ++at;
        }
    }
    item.header = static_cast<size_t>(at - data_) - at_;
    at_ += item.header;
    const level enclosing = open_.back();
    item.in_cut = (enclosing.flags & cut) != 0;
    if (item.indefinite) {
        if (!item.constructed) item.damage = ber_damage::indefinite_primitive;
        const unsigned char inherited = enclosing.flags & (to_the_last | cut);
        open_.push_back({enclosing.end, static_cast<unsigned char>(
                                            inherited | (item.constructed ? by_end_of_contents : has_no_length))});
        return true;
    }
    const auto left = static_cast<size_t>(end - at);
    item.length = item.declared <= left ? static_cast<size_t>(item.declared) : left;
    if (item.declared > left) {
        item.damage = ber_damage::too_long;
        open_too_long(item);
    } else if (item.constructed) {
        open_.push_back({at_ + item.length, 0});
    } else {
        at_ += item.length;
    }
    return true;
}

// It takes the end-of-contents octets around it along.
void ber_scanner::open_too_long(ber_item& item) {
    const unsigned char inherited = open_.back().flags & to_the_last;
    for (size_t i = open_.size(); (open_[i - 1].flags & is_indefinite) != 0; --i)
        open_[i - 1].flags |= excused;
    if (item.constructed && inherited == 0) {
        ber_scanner inside(data_ + at_, item.length);
        for (ber_item inner; !item.closed && inside.next(inner);)
            item.closed = inner.damage != ber_damage::none || inner.kind == ber_kind::missing_end;
    }
    if (item.opens())
        open_.push_back({at_ + item.length, static_cast<unsigned char>(inherited | cut)});
    else
        at_ += item.length;
}

}  // namespace zr::json
