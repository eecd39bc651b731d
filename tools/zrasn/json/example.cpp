#include "json/example.h"

#include <cstdint>

#include "base/members.h"
#include "json/uuid_text.h"

namespace zr::tool {

namespace {

class example_writer {
public:
    // Records nest as deep as their declarations here: a list of the record itself is left empty in the second level.
    void write(const record_type& type, unsigned level) {
        ++count_;
        if (is_uuid(type)) {
            text_ += "\"6ba7b810-9dad-11d1-80b4-" + digits(6) + "\"";
            return;
        }
        text_ += '{';
        for (const field& field : type) {
            if (!has_member(field.value)) continue;
            if (text_.back() != '{') text_ += ',';
            text_ += "\"" + std::string(field.name) + "\":";
            if (is_sequence_of(field))
                write_list(type, field, level);
            else
                write_value(field, level);
        }
        text_ += '}';
    }

    std::string text() const { return text_; }

private:
    void write_list(const record_type& type, const field& field, unsigned level) {
        const bool own = field.record == &type;
        const bool slots = field.held == holding::slots;
        text_ += '[';
        for (int i = 0; i < 2 && !(own && level != 0); ++i) {
            if (i != 0) text_ += ',';
            if (slots) text_ += "null,";
            write_value(field, own ? level + 1 : level);
        }
        text_ += ']';
    }

    void write_value(const field& field, unsigned level) {
        switch (field.value) {
            case value_kind::integer:
                text_ += std::to_string(number(field.integer));
                break;
            case value_kind::text:
            case value_kind::stored_text:
                text_ += "\"" + std::string(field.name) + " " + std::to_string(++count_) + "\"";
                break;
            case value_kind::octets:
                text_ += "\"" + digits(3) + "\"";
                break;
            case value_kind::fixed_octets:
                text_ += "\"" + digits(field.size) + "\"";
                break;
            case value_kind::record:
                write(*field.record, level);
                break;
            case value_kind::version:
                break;
        }
    }

    // In turns small and around the places where an encoding changes its length.
    int64_t number(integer_type type) {
        static constexpr int32_t numbers[] = {1, 127, 128, -1, 255, 32768, -129, 65535, INT32_MAX, INT32_MIN};
        const integer_range range = range_of(type);
        const int64_t found = numbers[count_++ % (sizeof numbers / sizeof *numbers)];
        return found < range.least ? found & range.most : found > range.most ? range.most : found;
    }

    std::string digits(uint32_t octets) {
        std::string text;
        for (; octets != 0; --octets) {
            ++count_;
            for (const unsigned half : {count_ * 37 / 16 % 16, count_ * 37 % 16})
                text += "0123456789abcdef"[half];
        }
        return text;
    }

    std::string text_;
    unsigned count_ = 0;  // of the values so far, so that each is another one
};

}  // namespace

std::string example_json(const record_type& type) {
    example_writer writer;
    writer.write(type, 0);
    return writer.text();
}

}  // namespace zr::tool
