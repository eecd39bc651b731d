#include "ber/locate.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "asn1/record/reader.h"
#include "base/envelope.h"
#include "base/path.h"

namespace zr::tool {

namespace {

std::string plural(size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

const char* universal_name(unsigned tag) {
    switch (tag) {
        case 0:
            return "end-of-contents octets";
        case 1:
            return "a BOOLEAN";
        case 2:
            return "an INTEGER";
        case 3:
            return "a BIT STRING";
        case 4:
            return "an OCTET STRING";
        case 5:
            return "a NULL";
        case 6:
            return "an OBJECT IDENTIFIER";
        case 10:
            return "an ENUMERATED";
        case 12:
            return "a UTF8String";
        case 16:
            return "a SEQUENCE";
        case 17:
            return "a SET";
        case 19:
            return "a PrintableString";
        case 22:
            return "an IA5String";
        default:
            return nullptr;
    }
}

// The element at the cursor, by its identifier.
std::string describe(const input& in) {
    if (in.at == in.end) return "no more octets";
    char octet[8];
    std::snprintf(octet, sizeof(octet), " (%02x)", *in.at);
    static constexpr const char* classes[] = {"universal", "application", "context-specific", "private"};
    const unsigned cls = *in.at >> 6, tag = *in.at & 0x1F;
    const char* name = cls == 0 ? universal_name(tag) : nullptr;
    if (name != nullptr)
        return ((*in.at & 0x20) != 0 && tag != 16 && tag != 17 ? "a constructed form of " : "") + std::string(name) +
               octet;
    return std::string("an element with a") + (cls == 1 ? "n " : " ") + classes[cls] + " tag" + octet;
}

enum class wanted { sequence, integer, text, octets };

const char* name_of(wanted kind) {
    switch (kind) {
        case wanted::sequence:
            return "a SEQUENCE (30)";
        case wanted::integer:
            return "an INTEGER (02)";
        case wanted::text:
            return "a UTF8String (0c)";
        case wanted::octets:
            break;
    }
    return "an OCTET STRING (04)";
}

class walk {
public:
    walk(const unsigned char* data, size_t size, mismatch& found)
        : data_(data), in_{data, data + size}, mismatch_(found) {}

    // True when the octets fit.
    bool run(const record_type& type) {
        if (!enter_record(type)) return false;
        while (!stack_.empty()) {
            frame& top = stack_.back();
            const bool good = top.in_list                   ? next_element(top)
                              : top.next != top.type->end() ? next_member(top)
                                                            : leave_record();
            if (!good) return false;
        }
        if (mismatch_.status == 0) mismatch_.offset = static_cast<size_t>(in_.at - data_);
        return mismatch_.status == 0;
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

    bool refuse(int status, const unsigned char* at, std::string found, std::string expected) {
        // A slot that reads as neither NULL nor the record fits no alternative, whatever is wrong inside.
        for (const frame& open : stack_)
            if (open.in_list && open.next->kind == field_kind::slots) status = zr_err_no_match;
        mismatch_.status = status;
        mismatch_.offset = static_cast<size_t>(at - data_);
        mismatch_.found = std::move(found);
        mismatch_.expected = std::move(expected);
        path_builder path;
        for (const frame& open : stack_) {
            if (open.next == open.type->end()) continue;
            path.member(open.next->name);
            if (open.in_list) path.element(open.element);
        }
        mismatch_.path = path.text();
        return false;
    }

    // The reader of a value has given this status and left the cursor before the value.
    bool refuse_value(int status, wanted kind) {
        const std::string expected = name_of(kind);
        const std::string found = describe(in_);
        switch (status) {
            case zr_err_no_match:
                return refuse(status, in_.at, found, expected);
            case zr_err_data_ends_early:
                if (in_.at == in_.end) return refuse(status, in_.at, "the end of the data", expected);
                return refuse(status, in_.at,
                              found + " that is longer than the " + plural(in_.left(), "octet") + " left here",
                              "one that ends within them");
            case zr_err_constructed_form:
                return refuse(status, in_.at, found, expected + " in the primitive form");
            case zr_err_primitive_form:
                return refuse(status, in_.at, found + " in the primitive form", expected);
            case zr_err_indefinite_length:
                return refuse(status, in_.at, found + " of indefinite length", "a definite length");
            case zr_err_integer_too_long:
                return refuse(status, in_.at, found + " of too many octets", "at most 32 bits");
            case zr_err_bad_contents:
                return refuse(status, in_.at, found + " with contents of a wrong form", expected);
            default:
                return refuse(status, in_.at, found, expected);
        }
    }

    bool enter(scope& entered) {
        const int status = enter_sequence(in_, entered);
        if (status != 0) return refuse_value(status, wanted::sequence);
        ++mismatch_.elements;
        return true;
    }

    bool leave(const scope& entered) {
        const unsigned char* at = in_.at;
        const size_t left = in_.left();
        const int status = leave_sequence(in_, entered);
        if (status == 0) return true;
        if (status == zr_err_trailing_data)
            return refuse(status, at, plural(left, "octet") + " more: " + describe(in_), "the end of the SEQUENCE");
        return refuse(status, at, describe(in_), "end-of-contents octets (00 00)");
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

    bool value(wanted kind) {
        int status = 0;
        if (kind == wanted::integer) {
            int32_t dropped = 0;
            status = read_integer(in_, dropped);
        } else if (kind == wanted::text) {
            char* dropped = nullptr;
            status = read_text(in_, dropped);
            std::free(dropped);
        } else {
            unsigned char* dropped = nullptr;
            uint32_t length = 0;
            status = read_octets(in_, dropped, length);
            std::free(dropped);
        }
        if (status != 0) return refuse_value(status, kind);
        ++mismatch_.elements;
        step(stack_.back());
        return true;
    }

    bool next_member(frame& top) {
        const field& field = *top.next;
        switch (field.kind) {
            case field_kind::integer:
                return value(wanted::integer);
            case field_kind::text:
                return value(wanted::text);
            case field_kind::octets:
            case field_kind::fixed_octets:
                return value(wanted::octets);
            case field_kind::nested:
                return enter_record(*field.nested);
            case field_kind::optional_nested:
                if (next_is_sequence(in_)) return enter_record(*field.nested);
                step(top);
                return true;
            default:
                if (!enter(top.list)) return false;
                top.in_list = true;
                top.element = 0;
                return true;
        }
    }

    // What the counting member cannot hold is refused only when nothing else is wrong.
    void count_element(const frame& top, const field& field) {
        if (field.count.octets != 2 || top.element != 0xFFFF || mismatch_.status != 0) return;
        refuse(zr_err_out_of_memory, in_.at, "more than 65535 elements",
               "as many as " + std::string(field.count_name) + " can count");
    }

    bool next_element(frame& top) {
        const field& field = *top.next;
        if (at_end(in_, top.list)) {
            top.in_list = false;
            if (!leave(top.list)) return false;
            step(top);
            return true;
        }
        count_element(top, field);
        switch (field.kind) {
            case field_kind::list_of_integers:
                return value(wanted::integer);
            case field_kind::list_of_texts:
                return value(wanted::text);
            case field_kind::slots: {
                if (!skip_null(in_)) return enter_record(*field.nested);
                step(top);
                return true;
            }
            default:
                return enter_record(*field.nested);
        }
    }

    const unsigned char* const data_;
    input in_;
    mismatch& mismatch_;
    std::vector<frame> stack_;
};

}  // namespace

bool locate_mismatch(const unsigned char* data, size_t size, const record_type& type, mismatch& found) {
    return !walk(data, size, found).run(type);
}

size_t record_end(const unsigned char* data, size_t size, const record_type& type) {
    // Nearly always the first header tells it.
    const size_t octets = size < 2 || data[1] < 0x80 ? 0 : data[1] & 0x7Fu;
    if (size >= 2 && data[0] == sequence_identifier && data[1] != 0x80 && octets <= 4 && octets <= size - 2) {
        uint64_t length = octets == 0 ? data[1] : 0;
        for (size_t i = 0; i != octets; ++i)
            length = length << 8 | data[2 + i];
        return 2 + octets + static_cast<size_t>(length);
    }
    mismatch found;
    return locate_mismatch(data, size, type, found) ? size : found.offset;
}

}  // namespace zr::tool
