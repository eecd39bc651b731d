#include "json/record_writer.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/members.h"
#include "base/text.h"
#include "json/uuid_text.h"

namespace zr::tool {

namespace {

class writer {
public:
    writer(output& out, json_layout layout)
        : out_(out), spaced_(layout == json_layout::indented), deepest_(spaced_ ? 32 : 0) {}

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
        switch (member.value) {
            case value_kind::integer:
                return write_integer(number_at(value, member.integer));
            case value_kind::version:
                return;  // without a member
            case value_kind::text:
            case value_kind::stored_text:
                return write_text(load<const char*>(value));
            case value_kind::octets:
                if (value == nullptr) return out_.write("\"\"");  // absent
                return write_octets(load<const unsigned char*>(value), octets_length(member, structure));
            case value_kind::fixed_octets:
                return write_octets(static_cast<const unsigned char*>(value), member.size);
            case value_kind::record:
                return write_record(member.record, value);
        }
    }

    template <class T>
    static T load(const void* from) {
        T value;
        std::memcpy(&value, from, sizeof(T));
        return value;
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

    void write_integer(int64_t number) {
        char digits[20];
        const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
        out_.write({digits, static_cast<size_t>(end - digits)});
    }

    // Numbers stand side by side.
    void write_integers(const field& member, const void* structure, uint32_t count) {
        out_.put('[');
        for (uint32_t i = 0; i < count; ++i) {
            if (i != 0) out_.write(spaced_ ? ", " : ",");
            write_integer(number_at(value_at(member, structure, i), member.integer));
        }
        out_.put(']');
    }

    void write_text(const char* text) {
        const std::string_view all = text == nullptr ? "" : text;
        if (is_utf8(all)) return write_json_string(out_, all);
        out_.write(spaced_ ? "{\"hex\": " : "{\"hex\":");
        write_octets(reinterpret_cast<const unsigned char*>(all.data()), all.size());
        out_.put('}');
    }

    void write_octets(const unsigned char* octets, size_t count) {
        out_.put('"');
        out_.write_hex(octets, count);
        out_.put('"');
    }

    output& out_;
    const bool spaced_;
    const size_t deepest_;  // level whose elements have lines of their own
    size_t depth_ = 0;
    std::vector<frame> stack_;
};

// One UTF-16 unit.
void write_unit(output& out, uint32_t unit) {
    char escape[8];
    std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(unit & 0xFFFF));
    out.write({escape, 6});
}

void write_escape(output& out, uint32_t code_point) {
    static constexpr char shorts[] = "\b\t\n\f\r\"\\";
    const char* found =
        code_point == 0 || code_point > 0x7F ? nullptr : std::strchr(shorts, static_cast<int>(code_point));
    if (found != nullptr) {
        out.put('\\');
        out.put("btnfr\"\\"[found - shorts]);
    } else if (code_point < 0x10000) {
        write_unit(out, code_point);
    } else {
        write_unit(out, 0xD7C0 + (code_point >> 10));
        write_unit(out, 0xDC00 + (code_point & 0x3FF));
    }
}

}  // namespace

void write_json(output& out, const record_type& type, const void* contents, json_layout layout) {
    writer(out, layout).write(type, contents);
}

void write_json_string(output& out, std::string_view text) {
    out.put('"');
    size_t plain = 0;  // octets that go as they are
    for (size_t at = 0; at < text.size();) {
        const auto c = static_cast<unsigned char>(text[at]);
        if (c >= 0x20 && c < 0x7F && c != '"' && c != '\\') {
            ++at;
            ++plain;
            continue;
        }
        uint32_t code_point = 0xFFFD;
        size_t count = decode_utf8(text.substr(at, 4), code_point);
        if (count != 0 && c >= 0x80 && is_printable(code_point)) {
            at += count;
            plain += count;
            continue;
        }
        out.write(text.substr(at - plain, plain));
        plain = 0;
        write_escape(out, count == 0 ? 0xFFFD : code_point);
        at += count == 0 ? 1 : count;
    }
    out.write(text.substr(text.size() - plain));
    out.put('"');
}

}  // namespace zr::tool
