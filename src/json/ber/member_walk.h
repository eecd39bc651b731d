// A walk over the headers of an encoding to the members that paths lead to. What lies beside is stepped over.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "json/base/members.h"
#include "json/ber/asn1_types.h"
#include "json/ber/member_path.h"

namespace zr::json {

// What paths lead to: a member, or an element of a list or of slots.
struct walked_value {
    const field& member;
    bool is_empty_slot;
    const unsigned char* element;  // from its identifier on
    size_t size;
    const unsigned char* contents;
    size_t length;
    const uint32_t* paths;  // the numbers of those that end here
    size_t path_count;
};

// member_walk takes encodings as the library writes them, as far as it looks: anything else on the way ends the walk,
// so that it knows one form of each header, which is read in a few instructions. (ber_scanner and record_guide know all
// there are; with them a walk costs three times as much.) It keeps its blocks from one encoding to the next. It costs a
// look at each header on the ways and beside them, up to the last, and none at what those beside have inside.
//
// The visitor has
//   bool value(const walked_value&)      false ends the walk, as if the element were not as it should be
//   void open(const field*, bool list)   a record, or a list or slots, on the way; null for the record itself
//   void close(bool list)                its end
//   void absent(const field&, const uint32_t* paths, size_t count)
//                                        an optional member that is not there: paths lead to it, or over it
//   bool done() const                    whether the rest need not be walked
//   static constexpr bool whole          whether a value to which a path leads is not looked into for other paths
class member_walk {
public:
    // The paths are into the record, and belong to the caller.
    member_walk(const record_type& type, const std::vector<member_path>& paths) : type_(type), paths_(paths) {}

    // False when what was looked at is not as the library writes it, or something stands behind the record.
    template <class Visitor>
    bool run(const unsigned char* data, size_t size, Visitor& visitor) {
        const field* last = nullptr;  // of the record's own members that are on a path
        for (const member_path& path : paths_)
            last = last == nullptr || path.front().member > last ? path.front().member : last;
        at_ = data;
        levels_.clear();
        active_.clear();
        header record;
        if (!read(data + size, record) || record.identifier != sequence || at_ + record.length != data + size)
            return false;
        for (uint32_t i = 0; i != paths_.size(); ++i)
            active_.push_back(i);
        enter({type_.begin(), type_.end(), data + size, 0, 0, 0, 0}, nullptr, visitor);
        while (!visitor.done()) {
            const level& top = levels_.back();
            // What follows the last member on a path is not looked at, unless nothing may follow.
            const bool enough = levels_.size() == 1 && top.next > last && top.next != top.end;
            if (!enough && at_ != top.until) {
                if (!step(visitor)) return false;
                continue;
            }
            if (top.end != nullptr) {
                for (const field* member = top.next; member != top.end && !enough; ++member)
                    // Of a record there is a next member. NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
                    if (member->held != holding::optional) return false;
                skip_absent(top, top.end, visitor);
            }
            visitor.close(top.end == nullptr);
            active_.resize(top.base);
            levels_.pop_back();
            if (levels_.empty()) break;
        }
        return true;
    }

private:
    static constexpr unsigned char sequence = 0x20 | tag_sequence;

    struct header {
        unsigned char identifier;
        size_t length;
    };
    struct level {
        const field* next;           // of a record: the member behind the one read last; of a list: the list
        const field* end;            // of the record; null in a list
        const unsigned char* until;  // where its contents end
        size_t base;                 // of `active_`, when the level ends
        size_t begin;                // of `active_`: the paths that lead on from here
        size_t steps;                // of these paths that lead here
        uint32_t index;              // of a list: of the next element
    };

    // Reads a header whose contents end by `end`; false when there is none in the library's form. Afterwards the walk
    // is at the contents.
    bool read(const unsigned char* end, header& found) {
        if (end - at_ < 2) return false;
        found.identifier = *at_++;
        found.length = *at_++;
        if (found.length >= 0x80) {
            size_t count = found.length & 0x7F;
            if (count == 0 || count > 4 || count > static_cast<size_t>(end - at_) || *at_ == 0) return false;
            for (found.length = 0; count != 0; --count)
                found.length = found.length << 8 | *at_++;
            if (found.length < 0x80) return false;
        }
        return found.length <= static_cast<size_t>(end - at_);
    }

    static unsigned char identifier_of(const field& member) {
        return member.value == value_kind::record ? sequence : static_cast<unsigned char>(tag_of(member.value));
    }

    // One element in the innermost level.
    template <class Visitor>
    bool step(Visitor& visitor) {
        level& top = levels_.back();
        const unsigned char* const element = at_;
        header head;
        if (!read(top.until, head)) return false;
        const field* member = top.next;
        const uint32_t index = top.index;
        const size_t base = active_.size(), steps = top.steps;
        bool is_null = false;
        if (top.end != nullptr) {
            const auto fits = [&] {
                return head.identifier == (is_sequence_of(*member) ? sequence : identifier_of(*member));
            };
            while (member != top.end && member->held == holding::optional && !fits())
                ++member;
            if (member == top.end || !fits()) return false;
            if (member != top.next) skip_absent(top, member, visitor);
            top.next = member + 1;
            for (size_t i = top.begin; i != base; ++i)
                if (paths_[active_[i]][steps].member == member) active_.push_back(active_[i]);
        } else {
            is_null = member->held == holding::slots && head.identifier == tag_null && head.length == 0;
            if ((!is_null && head.identifier != identifier_of(*member)) || index >= most_places(*member)) return false;
            ++top.index;
            for (size_t i = top.begin; i != base; ++i)
                if (const uint32_t at = paths_[active_[i]][steps].index; at == path_step::every || at == index)
                    active_.push_back(active_[i]);
        }
        const unsigned char* const contents = at_;
        const unsigned char* const end = at_ + head.length;
        if (active_.size() == base) {
            at_ = end;
            return true;
        }
        if (top.end != nullptr && is_sequence_of(*member)) {
            enter({member, nullptr, end, base, base, steps, 0}, member, visitor);
            return true;
        }
        const auto first = active_.begin() + static_cast<std::ptrdiff_t>(base);
        const auto ends = [&](uint32_t path) { return paths_[path].size() == steps + 1; };
        const auto ended = static_cast<size_t>(
            (active_.size() - base == 1 ? first + ends(*first) : std::partition(first, active_.end(), ends)) - first);
        const bool further = base + ended != active_.size() && !is_null && (ended == 0 || !Visitor::whole);
        if ((ended != 0 || is_null) && !visitor.value({*member, is_null, element, static_cast<size_t>(end - element),
                                                       contents, head.length, active_.data() + base, ended}))
            return false;
        if (further) {
            enter({member->record->begin(), member->record->end(), end, base, base + ended, steps + 1, 0}, member,
                  visitor);
            return true;
        }
        active_.resize(base);
        at_ = end;
        return true;
    }

    template <class Visitor>
    void enter(const level& inner, const field* member, Visitor& visitor) {
        levels_.push_back(inner);
        visitor.open(member, inner.end == nullptr);
    }

    // The members of an open record before one of them that have been left out.
    template <class Visitor>
    void skip_absent(const level& in, const field* before, Visitor& visitor) {
        const size_t base = active_.size();
        for (const field* member = in.next; member != before; ++member) {
            for (size_t i = in.begin; i != base; ++i)
                if (paths_[active_[i]][in.steps].member == member) active_.push_back(active_[i]);
            if (active_.size() != base) visitor.absent(*member, active_.data() + base, active_.size() - base);
            active_.resize(base);
        }
    }

    const record_type& type_;
    const std::vector<member_path>& paths_;
    const unsigned char* at_ = nullptr;
    std::vector<level> levels_;
    std::vector<uint32_t> active_;  // the paths that lead on, of each open level behind those of the one around it
};

}  // namespace zr::json
