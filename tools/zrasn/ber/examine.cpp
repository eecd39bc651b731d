#include "ber/examine.h"

#include <cstdlib>
#include <vector>

#include "asn1/record/reader.h"
#include "base/members.h"
#include "base/path.h"

namespace zr::tool {

namespace {

class walk {
public:
    walk(const unsigned char* data, size_t size, refusal& found)
        : data_(data), in_{data, data + size}, refusal_(found) {}

    int run(const record_type& type) {
        bool good = enter_record(type);
        while (good && !stack_.empty()) {
            frame& top = stack_.back();
            good = top.in_list ? next_element(top) : top.next != top.type->end() ? next_member(top) : leave_record();
        }
        return refusal_.status;
    }

private:
    // A SEQUENCE that is open: a record, and of it the list that is being read.
    struct frame {
        const record_type* type;
        const field* next;  // member; in a list the one that is the list
        scope record;
        scope list;
        uint32_t element;
        bool in_list;
    };

    bool refuse(int status, expectation expected) {
        // A slot that reads as neither NULL nor the record fits no alternative, whatever is wrong inside.
        for (const frame& open : stack_)
            if (open.in_list && held_of(*open.next) == holding::slots) status = zr_err_no_match;
        refusal_.status = status;
        refusal_.offset = static_cast<size_t>(in_.at - data_);
        refusal_.left = in_.left();
        refusal_.expected = expected;
        path_builder path;
        for (const frame& open : stack_) {
            if (open.next == open.type->end()) continue;
            path.member(open.next->name);
            if (open.in_list) path.element(open.element);
        }
        refusal_.path = path.text();
        return false;
    }

    bool enter(scope& entered) {
        const int status = enter_sequence(in_, entered);
        return status == 0 || refuse(status, expectation::sequence);
    }

    bool leave(const scope& entered) {
        const int status = leave_sequence(in_, entered);
        return status == 0 ||
               refuse(status, entered.indefinite ? expectation::end_of_contents : expectation::end_of_sequence);
    }

    bool enter_record(const record_type& type) {
        scope entered{};
        if (!enter(entered)) return false;
        stack_.push_back({&type, type.begin(), entered, {}, 0, false});
        return true;
    }
    bool leave_record() {
        if (!leave(stack_.back().record)) return false;
        stack_.pop_back();
        if (!stack_.empty()) step(stack_.back());
        return true;
    }

    static void step(frame& top) {
        if (top.in_list)
            ++top.element;
        else
            ++top.next;
    }

    // A member, or an element of a list.
    bool value(const field& member) {
        int status = 0;
        expectation expected = expectation::octet_string;
        switch (value_of(member)) {
            case value_kind::record:
                return enter_record(*record_of(member));
            case value_kind::integer: {
                int32_t dropped = 0;
                status = read_integer(in_, dropped);
                expected = expectation::integer;
                break;
            }
            case value_kind::text: {
                char* dropped = nullptr;
                status = read_text(in_, dropped);
                std::free(dropped);
                expected = expectation::utf8_string;
                break;
            }
            case value_kind::octets:
            case value_kind::fixed_octets: {
                unsigned char* dropped = nullptr;
                uint32_t length = 0;
                status = read_octets(in_, dropped, length);
                std::free(dropped);
                break;
            }
        }
        if (status != 0) return refuse(status, expected);
        step(stack_.back());
        return true;
    }

    bool next_member(frame& top) {
        switch (held_of(*top.next)) {
            case holding::one:
                return value(*top.next);
            case holding::optional:
                if (next_is_sequence(in_)) return value(*top.next);
                step(top);
                return true;
            case holding::list:
            case holding::pointer_list:
            case holding::slots:
                break;
        }
        if (!enter(top.list)) return false;
        top.in_list = true;
        top.element = 0;
        return true;
    }

    bool next_element(frame& top) {
        const field& member = *top.next;
        if (at_end(in_, top.list)) {
            top.in_list = false;
            if (!leave(top.list)) return false;
            step(top);
            return true;
        }
        // What the counting member cannot hold is refused only when nothing else is wrong.
        const bool is_slot = held_of(member) == holding::slots;
        if (!is_slot && top.element == most_places(member) && refusal_.status == 0) {
            refuse(zr_err_out_of_memory, expectation::fewer_elements);
            refusal_.count_name = member.count_name;
        }
        if (!is_slot || !skip_null(in_)) return value(member);
        step(top);
        return true;
    }

    const unsigned char* const data_;
    input in_;
    refusal& refusal_;
    std::vector<frame> stack_;
};

}  // namespace

int examine(const record_type& type, const unsigned char* octets, size_t size, refusal& found) {
    found = {};
    return walk(octets, size, found).run(type);
}

}  // namespace zr::tool
