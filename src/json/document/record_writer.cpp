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
    writer(json_pen& pen, secret_values secrets) : pen_(pen), out_(pen.out()), secrets_(secrets) {}

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
                pen_.close('}', false);
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

    // The next field that the structure has a member for.
    static const field* with_member(const record_type& type, const field* at) {
        while (at != type.end() && !has_member(at->value))
            ++at;
        return at;
    }

    void write_next_member(frame& top) {
        const field& member = *top.next;
        pen_.separate(&member == with_member(*top.type, top.type->begin()));
        pen_.key(member.name);
        if (!is_sequence_of(member)) {
            ++top.next;
            return write_value(member, top.structure, 0);
        }
        const uint32_t count = used_places(member, top.structure);
        if (member.value == value_kind::integer) {
            ++top.next;
            return write_integers(member, top.structure, count);
        }
        pen_.open('[');
        top.element = 0;
        top.count = count;
        top.in_list = true;
    }

    void write_next_element(frame& top) {
        if (top.element == top.count) {
            ++top.next;
            top.in_list = false;
            return pen_.close(']', top.count == 0);
        }
        pen_.separate(top.element == 0);
        write_value(*top.next, top.structure, top.element++);
    }

    void write_value(const field& member, const void* structure, uint32_t index) {
        const void* value = value_at(member, structure, index);
        if (member.secret && secrets_ == secret_values::hidden) return write_json_string(out_, not_shown);
        if (member.value == value_kind::record) return write_record(member.record, value);
        write_scalar(out_, member, structure, value, pen_.spaced());
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
        pen_.open('{');
        stack_.push_back({type, structure, type->fields, 0, 0, false});
    }

    // Numbers stand side by side.
    void write_integers(const field& member, const void* structure, uint32_t count) {
        out_.put('[');
        for (uint32_t i = 0; i < count; ++i) {
            pen_.separate_in_row(i == 0);
            write_scalar(out_, member, structure, value_at(member, structure, i), pen_.spaced());
        }
        out_.put(']');
    }

    json_pen& pen_;
    output& out_;
    const secret_values secrets_;
    std::vector<frame> stack_;
};

}  // namespace

void write_json(output& out, const record_type& type, const void* contents, json_layout layout, secret_values secrets) {
    json_pen pen(out, layout);
    write_json(pen, type, contents, secrets);
}

void write_json(json_pen& pen, const record_type& type, const void* contents, secret_values secrets) {
    writer(pen, secrets).write(type, contents);
}

}  // namespace zr::json
