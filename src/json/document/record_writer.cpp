#include "json/document/record_writer.h"

#include <cstdint>
#include <vector>

#include "json/base/members.h"
#include "json/document/scalars.h"
#include "json/document/string_writer.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

class writer {
public:
    writer(output& out, json_layout layout, secret_values secrets)
        : out_(out), secrets_(secrets), spaced_(layout == json_layout::indented), deepest_(spaced_ ? 32 : 0) {}

    void write(const record_type& type, const void* structure) {
        write_record(&type, structure);
        while (!stack_.empty()) {
            frame& top = stack_.back();
            if (top.in_list) {
                write_next_element(top);
            } else if (top.next = with_member(*top.type, top.next); top.next != top.type->end()) {
                write_next_member(top);
            } else {
                stack_.pop_back();
                close('}', false);
            }
        }
    }

private:
    // A record that is open, and how far it is written.
    struct frame {
        const record_type* type;
        const void* structure;
        const field* next;  // member; in a list the one that is the list
        uint32_t element;   // of the list: next one
        uint32_t count;     // of the list
        bool in_list;
    };

    void open(char bracket) {
        out_.put(bracket);
        ++depth_;
    }
    void close(char bracket, bool empty) {
        const bool own_line = !empty && depth_ <= deepest_;
        --depth_;
        if (own_line) new_line();
        out_.put(bracket);
    }
    void new_line() {
        out_.put('\n');
        for (size_t i = 0; i < depth_; ++i)
            out_.write("  ");
    }
    // Before a member or an element.
    void separate(bool first) {
        if (!first) out_.put(',');
        if (depth_ <= deepest_)
            new_line();
        else if (!first && spaced_)
            out_.put(' ');
    }

    // The next field that the structure has a member for.
    static const field* with_member(const record_type& type, const field* at) {
        while (at != type.end() && !has_member(at->value))
            ++at;
        return at;
    }

    void write_next_member(frame& top) {
        const field& member = *top.next;
        separate(&member == with_member(*top.type, top.type->begin()));
        out_.put('"');
        out_.write(member.name);
        out_.write(spaced_ ? "\": " : "\":");
        if (!is_sequence_of(member)) {
            ++top.next;
            return write_value(member, top.structure, 0);
        }
        const uint32_t count = used_places(member, top.structure);
        if (member.value == value_kind::integer) {
            ++top.next;
            return write_integers(member, top.structure, count);
        }
        open('[');
        top.element = 0;
        top.count = count;
        top.in_list = true;
    }

    void write_next_element(frame& top) {
        if (top.element == top.count) {
            ++top.next;
            top.in_list = false;
            return close(']', top.count == 0);
        }
        separate(top.element == 0);
        write_value(*top.next, top.structure, top.element++);
    }

    void write_value(const field& member, const void* structure, uint32_t index) {
        const void* value = value_at(member, structure, index);
        if (member.secret && secrets_ == secret_values::hidden) return write_json_string(out_, not_shown);
        if (member.value == value_kind::record) return write_record(member.record, value);
        write_scalar(out_, member, structure, value, spaced_);
    }

    // Opens it; the loop writes the rest.
    void write_record(const record_type* type, const void* structure) {
        if (structure == nullptr) return out_.write("null");
        if (is_uuid(*type)) {
            char text[uuid_text_size];
            format_uuid(structure, text);
            out_.put('"');
            out_.write({text, sizeof(text)});
            return out_.put('"');
        }
        open('{');
        stack_.push_back({type, structure, type->fields, 0, 0, false});
    }

    // Numbers stand side by side.
    void write_integers(const field& member, const void* structure, uint32_t count) {
        out_.put('[');
        for (uint32_t i = 0; i < count; ++i) {
            if (i != 0) out_.write(spaced_ ? ", " : ",");
            write_scalar(out_, member, structure, value_at(member, structure, i), spaced_);
        }
        out_.put(']');
    }

    output& out_;
    const secret_values secrets_;
    const bool spaced_;
    const size_t deepest_;  // level whose elements have lines of their own
    size_t depth_ = 0;
    std::vector<frame> stack_;
};

}  // namespace

void write_json(output& out, const record_type& type, const void* contents, json_layout layout, secret_values secrets) {
    writer(out, layout, secrets).write(type, contents);
}

}  // namespace zr::json
