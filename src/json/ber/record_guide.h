// Which member of a record each element of an encoding is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "json/base/members.h"
#include "json/ber/scanner.h"

namespace zr::json {

// What an element is to the record.
struct record_place {
    enum class role : uint8_t {
        none,                // nothing: there is no record here, or it has no member for this
        record,              // the record itself
        member,              // the member `member`
        element,             // element `index` of the list or slots `member`
        segment,             // of a string in the constructed form
        unexpected,          // stands where `member` should be, or, when that is null, the record or its end
        unexpected_element,  // stands in the list or slots `member`, but can be no element
    };
    role what = role::none;
    const field* member = nullptr;
    const record_type* record = nullptr;  // of a SEQUENCE that is a record
    uint32_t index = 0;

    // Whether the element is a SEQUENCE of the elements or slots of `member`.
    bool is_list() const;
    // An INTEGER member or element of a list of them.
    bool is_integer() const;
};

// record_guide follows a ber_scanner. It holds one block of 24 octets (16 with 32 bits) for each open level.
class record_guide {
public:
    // Without a record nothing is told.
    explicit record_guide(const record_type* type) : type_(type) {}

    // To be called for every item in turn: leaves the levels that ended before it. `missing(depth, field)` is called
    // for each mandatory member that a record has ended without, unless something in it could not be read, or had a
    // length that took in what stood behind it.
    template <class Missing>
    void leave(size_t depth, Missing&& missing) {
        for (; levels_.size() > depth; levels_.pop_back()) {
            const level& top = levels_.back();
            if (top.what != inside::record || top.lost) continue;
            for (const field* left = top.next; left != top.type->end(); ++left)
                if (left->held != holding::optional) missing(levels_.size(), *left);
        }
    }
    // Then for every element.
    record_place visit(const ber_item& item);
    // The octets left of the innermost open level cannot be read.
    void lose_rest() {
        if (!levels_.empty()) levels_.back().lost = true;
    }

    // The way to the element visited last, such as "attrs[3].name"; the middle of a long one is left out.
    std::string path() const;

private:
    enum class inside : uint8_t { unknown, record, list, segments };
    struct level {
        const record_type* type;  // of the record that is open, or that the list belongs to
        const field* next;        // member; in lists and strings the one that they are
        uint32_t index;
        inside what;
        bool lost;    // members may be missing
        bool excess;  // one element more than there are members has been met: others are no news
    };

    record_place place_in(level& top, const ber_item& item);

    const record_type* type_;
    std::vector<level> levels_;
    bool seen_ = false;  // the record, or what stands in its place
};

}  // namespace zr::json
