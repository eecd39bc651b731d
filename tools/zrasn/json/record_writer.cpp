#include "json/record_writer.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "asn1/record/integers.h"
#include "asn1/record/shape.h"
#include "base/text.h"
#include "json/uuid_text.h"

namespace zr::tool {

namespace {

class writer {
public:
    writer(output& out, json_layout layout)
        : out_(out), spaced_(layout == json_layout::indented), deepest_(spaced_ ? 32 : 0) {}

    void write(const record_type& type, const void* contents) {
        write_record(&type, contents);
        while (!stack_.empty()) {
            frame& top = stack_.back();
            if (top.in_list) {
                write_next_element(top);
            } else if (top.next != top.type->end()) {
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
        const char* contents;
        const field* next;  // member; in a list the one that is the list
        uint32_t element;   // of the list: next one
        uint32_t count;     // of the list
        bool in_list;
    };

    template <class T>
    static T load(const char* from, size_t index = 0) {
        T value;
        std::memcpy(&value, from + index * sizeof(T), sizeof(T));
        return value;
    }

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

    void write_next_member(frame& top) {
        const field& field = *top.next;
        const char* member = top.contents + field.offset;
        separate(&field == top.type->fields);
        out_.put('"');
        out_.write(field.name);
        out_.write(spaced_ ? "\": " : "\":");
        ++top.next;
        switch (field.kind) {
            case field_kind::integer:
                return write_integer(member, field.integer);
            case field_kind::text:
                return write_text(load<const char*>(member));
            case field_kind::octets: {
                const auto* data = load<const unsigned char*>(member);
                return write_octets(data, data == nullptr ? 0 : count_of(field, top.contents));
            }
            case field_kind::fixed_octets:
                return write_octets(reinterpret_cast<const unsigned char*>(member), field.size);
            case field_kind::nested:
                return write_record(field.nested, member);
            case field_kind::optional_nested:
                return write_record(field.nested, load<const void*>(member));
            case field_kind::list_of_integers:
                return write_integers(field, top.contents);
            case field_kind::slots:
                top.count = field.size;
                while (top.count != 0 && load<const void*>(member, top.count - 1) == nullptr)
                    --top.count;
                break;
            default:
                top.count = load<const void*>(member) == nullptr ? 0 : count_of(field, top.contents);
                break;
        }
        open('[');
        --top.next;
        top.element = 0;
        top.in_list = true;
    }

    void write_next_element(frame& top) {
        const field& field = *top.next;
        if (top.element == top.count) {
            ++top.next;
            top.in_list = false;
            return close(']', top.count == 0);
        }
        const char* member = top.contents + field.offset;
        const char* elements = field.kind == field_kind::slots ? member : load<const char*>(member);
        const size_t index = top.element++;
        separate(index == 0);
        if (field.kind == field_kind::list_of_texts) return write_text(load<const char*>(elements, index));
        write_record(field.nested, field.kind == field_kind::list_of_records ? elements + index * field.nested->size
                                                                             : load<const char*>(elements, index));
    }

    // Opens it; the loop writes the rest.
    void write_record(const record_type* type, const void* contents) {
        if (contents == nullptr) return out_.write("null");
        if (is_uuid(*type)) {
            char text[uuid_text_size];
            format_uuid(contents, text);
            out_.put('"');
            out_.write({text, sizeof(text)});
            return out_.put('"');
        }
        open('{');
        stack_.push_back({type, static_cast<const char*>(contents), type->fields, 0, 0, false});
    }

    static uint32_t count_of(const field& field, const char* contents) {
        return static_cast<uint32_t>(load_integer(contents + field.count_offset, field.count));
    }

    void write_integer(const void* from, integer_type type) {
        char digits[16];
        const int32_t value = load_integer(from, type);
        const auto end = type.is_signed
                             ? std::to_chars(digits, digits + sizeof(digits), value).ptr
                             : std::to_chars(digits, digits + sizeof(digits), static_cast<uint32_t>(value)).ptr;
        out_.write({digits, static_cast<size_t>(end - digits)});
    }

    // Numbers stand side by side.
    void write_integers(const field& field, const char* contents) {
        const char* elements = load<const char*>(contents + field.offset);
        const uint32_t count = elements == nullptr ? 0 : count_of(field, contents);
        out_.put('[');
        for (size_t i = 0; i < count; ++i) {
            if (i != 0) out_.write(spaced_ ? ", " : ",");
            write_integer(elements + i * field.integer.octets, field.integer);
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
