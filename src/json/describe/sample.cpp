#include "json/describe/sample.h"

#include "json/base/members.h"
#include "json/base/record_holder.h"
#include "json/document/record_reader.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

// What a sample decides: how many, which number, which text.
class sample_choices {
public:
    sample_choices(uint64_t seed, bool filled) : state_(seed), drawn_(seed != 0), filled_(filled) {}

    void begin_record() { ++count_; }
    bool is_there() { return filled_ || (drawn_ && below(2) != 0); }
    unsigned elements() {
        if (!drawn_) return filled_ ? 2 : 0;
        if (++lists_ > most_lists) return filled_ ? 1 : 0;
        return filled_ ? 1 + below(2) : below(4);
    }
    // Whether a slot in front of a value is empty.
    bool leaves_slot() { return !drawn_ || below(2) != 0; }

    // In turns, or drawn, small and around the places where an encoding changes its length.
    int64_t number(integer_type type) {
        static constexpr int32_t numbers[] = {1, 127, 128, -1, 255, 32768, -129, 65535, INT32_MAX, INT32_MIN};
        constexpr unsigned most = sizeof numbers / sizeof *numbers;
        if (!drawn_ && !filled_) return 0;
        const integer_range range = range_of(type);
        if (drawn_ && below(2) != 0)
            return range.least + static_cast<int64_t>(draw() % (static_cast<uint64_t>(range.most - range.least) + 1));
        const int64_t found = numbers[drawn_ ? below(most) : count_++ % most];
        return found < range.least ? found & range.most : found > range.most ? range.most : found;
    }

    // As it stands between quotes.
    std::string text(const char* name) {
        static constexpr const char* pieces[] = {"a", "Z",      "7",      " ",    "-",    "/",
                                                 ".", "\u00FC", "\u6F22", "\\\"", "\\\\", "\\n"};
        if (!drawn_) return filled_ ? std::string(name) + " " + std::to_string(++count_) : std::string();
        std::string text;
        for (unsigned left = (filled_ ? 1 : 0) + below(20); left != 0; --left)
            text += pieces[below(sizeof pieces / sizeof *pieces)];
        return text;
    }

    unsigned octets() {
        if (!drawn_) return filled_ ? 3 : 0;
        return (filled_ ? 1 : 0) + below(20);
    }
    std::string digits(uint32_t octets) {
        std::string text;
        for (; octets != 0; --octets) {
            const unsigned octet = drawn_ ? below(256) : filled_ ? ++count_ * 37 : 0;
            for (const unsigned half : {octet / 16 % 16, octet % 16})
                text += "0123456789abcdef"[half];
        }
        return text;
    }
    std::string uuid() {
        if (!drawn_) return filled_ ? "6ba7b810-9dad-11d1-80b4-" + digits(6) : "00000000-0000-0000-0000-000000000000";
        std::string text = digits(16);
        for (const size_t at : {8, 13, 18, 23})
            text.insert(at, 1, '-');
        return text;
    }

private:
    static constexpr unsigned most_lists = 200;  // that have more elements than they must

    // The generator "splitmix64": a counter whose bits are mixed.
    uint64_t draw() {
        uint64_t bits = state_ += 0x9E3779B97F4A7C15;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }
    unsigned below(unsigned limit) { return static_cast<unsigned>(draw() % limit); }

    uint64_t state_;
    const bool drawn_;
    const bool filled_;
    unsigned count_ = 0;  // of the values so far, so that each is another one
    unsigned lists_ = 0;
};

class sample_writer {
public:
    sample_writer(uint64_t seed, bool filled) : choices_(seed, filled) {}

    // Records nest as deep as their declarations here: a list of the record itself is left empty in the second level.
    void write(const record_type& type, unsigned level) {
        choices_.begin_record();
        if (is_uuid(type)) return quote(choices_.uuid());
        text_ += '{';
        for (const field& field : type) {
            if (!has_member(field.value)) continue;
            if (text_.back() != '{') text_ += ',';
            quote(field.name);
            text_ += ':';
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
        uint32_t room = most_places(field);
        text_ += '[';
        for (unsigned left = own && level != 0 ? 0 : choices_.elements(); left != 0 && room != 0; --left, --room) {
            if (text_.back() != '[') text_ += ',';
            if (field.held == holding::slots && room > 1 && choices_.leaves_slot()) {
                text_ += "null,";
                --room;
            }
            write_present(field, own ? level + 1 : level);
        }
        text_ += ']';
    }

    void write_value(const field& field, unsigned level) {
        if (field.held == holding::optional && !choices_.is_there())
            text_ += "null";
        else
            write_present(field, level);
    }

    void write_present(const field& field, unsigned level) {
        switch (field.value) {
            case value_kind::integer:
                text_ += std::to_string(choices_.number(field.integer));
                break;
            case value_kind::text:
            case value_kind::stored_text:
                quote(choices_.text(field.name));
                break;
            case value_kind::octets:
                quote(choices_.digits(choices_.octets()));
                break;
            case value_kind::fixed_octets:
                quote(choices_.digits(field.size));
                break;
            case value_kind::record:
                write(*field.record, level);
                break;
            case value_kind::version:
                break;
        }
    }

    void quote(const std::string& text) { text_ += "\"" + text + "\""; }

    sample_choices choices_;
    std::string text_;
};

}  // namespace

std::string sample_json(const record_type& type, uint64_t seed, bool filled) {
    sample_writer writer(seed, filled);
    writer.write(type, 0);
    return writer.text();
}

void write_sample(output& out, const record_type& type, uint64_t seed, bool filled, json_layout layout) {
    record_holder sample(type);
    json_error ignored;  // what is written above is JSON of the record
    static_cast<void>(read_json(sample_json(type, seed, filled), type, sample.get(), ignored));
    write_json(out, type, sample.get(), layout, secret_values::shown);
}

}  // namespace zr::json
