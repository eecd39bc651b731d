#include "json/record_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <vector>

#include <nlohmann/json.hpp>

#include "asn1/record/integers.h"
#include "asn1/record/shape.h"
#include "base/hex.h"
#include "base/path.h"
#include "base/suggest.h"
#include "base/text.h"
#include "json/uuid_text.h"

namespace zr::tool {

namespace {

using json = nlohmann::json;

// text_iterator tells how far the lexer has read.
struct text_iterator {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    const char* at;
    const char** reached;

    reference operator*() const { return *at; }
    text_iterator& operator++() {
        *reached = ++at;
        return *this;
    }
    text_iterator operator++(int) {
        text_iterator old = *this;
        ++*this;
        return old;
    }
    bool operator==(const text_iterator& other) const { return at == other.at; }
    bool operator!=(const text_iterator& other) const { return at != other.at; }
};

void* zeroed(size_t octets) {
    void* block = std::calloc(octets == 0 ? 1 : octets, 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

char* copy_text(std::string_view text) {
    char* copy = static_cast<char*>(zeroed(text.size() + 1));
    std::memcpy(copy, text.data(), text.size());
    return copy;
}

// record_builder receives the events of nlohmann's parser.
class record_builder {
public:
    using number_integer_t = json::number_integer_t;
    using number_unsigned_t = json::number_unsigned_t;
    using number_float_t = json::number_float_t;
    using string_t = json::string_t;
    using binary_t = json::binary_t;

    record_builder(std::string_view source, const record_type& type, void* contents, json_error& error)
        : source_(source), reached_(source.data()), root_(type), contents_(contents), error_(error) {}

    const char** reached() { return &reached_; }

    bool null() {
        const target at = expected();
        if (at.accepts == value::slot || at.accepts == value::optional_record) return done();
        return refuse_type(at, "null");
    }
    bool boolean(bool flag) { return refuse_type(expected(), flag ? "true" : "false"); }
    bool number_integer(number_integer_t number) { return integer(number, std::to_string(number)); }
    bool number_unsigned(number_unsigned_t number) {
        constexpr auto most = static_cast<number_unsigned_t>(std::numeric_limits<number_integer_t>::max());
        return integer(static_cast<number_integer_t>(std::min(number, most)), std::to_string(number));
    }
    bool number_float(number_float_t, const string_t& digits) {
        const target at = expected();
        if (at.accepts != value::integer) return refuse_type(at, "a number");
        constexpr size_t longest = 40;
        const std::string number = digits.size() <= longest ? digits : digits.substr(0, longest) + "...";
        if (digits.find_first_of(".eE") == digits.npos) return refuse_range(at, number);
        return refuse("found " + number + ", expected " + name_of(at));
    }
    bool binary(binary_t&) { return refuse("found binary data"); }

    bool string(const string_t& text) {
        if (hex_ == hex_text::value) return hex_value(text);
        const target at = expected();
        switch (at.accepts) {
            case value::text:
                if (text.find('\0') != text.npos)
                    return refuse("found a zero character (\\u0000), expected a text: it would end there");
                place<char*>(element(at), 0) = copy_text(text);
                return done();
            case value::octets:
                return octets(at, text);
            case value::record:
            case value::optional_record:
            case value::slot:
                if (!is_uuid(*at.type)) break;
                if (!parse_uuid(text, record_at(at)))
                    return refuse("found " + in_quotes(text) + ", expected " + name_of(at));
                return done();
            default:
                break;
        }
        return refuse_type(at, "a string");
    }

    bool start_object(size_t) {
        const target at = expected();
        if (at.accepts == value::text && hex_ == hex_text::none) {
            hex_ = hex_text::key;
            return true;
        }
        const bool is_record =
            at.accepts == value::record || at.accepts == value::optional_record || at.accepts == value::slot;
        if (hex_ != hex_text::none || !is_record || is_uuid(*at.type)) return refuse_type(at, "an object");
        stack_.push_back({at.type, static_cast<char*>(record_at(at)), 0, nullptr, 0, 0, false});
        return true;
    }

    bool key(const string_t& name) {
        if (hex_ != hex_text::none) {
            if (hex_ != hex_text::key || name != "hex")
                return refuse("found a member " + in_quotes(name) + ", expected one member \"hex\"");
            hex_ = hex_text::value;
            return true;
        }
        frame& top = stack_.back();
        const field* found = find(top, name);
        if (found == nullptr) return refuse_member(*top.type, name);
        top.current = found;
        const uint64_t bit = uint64_t{1} << (found - top.type->fields);
        if ((top.seen & bit) != 0) return refuse("found this member a second time, expected it once");
        top.seen |= bit;
        return true;
    }

    bool end_object() {
        if (hex_ != hex_text::none) {
            if (hex_ != hex_text::end) return refuse("found {}, expected one member \"hex\"");
            hex_ = hex_text::none;
            return done();
        }
        const frame top = stack_.back();
        fill_texts(*top.type, top.contents, top.seen);
        stack_.pop_back();
        return done();
    }

    bool start_array(size_t) {
        const target at = expected();
        if (hex_ != hex_text::none || at.accepts != value::array) return refuse_type(at, "an array");
        frame& top = stack_.back();
        top.in_list = true;
        top.element = top.capacity = 0;
        return true;
    }

    bool end_array() {
        stack_.back().in_list = false;
        return done();
    }

    bool parse_error(size_t, const std::string&, const json::exception& exception) {
        std::string message = exception.what();
        const size_t text = message.find(": ");  // behind "[json.exception.parse_error.101] parse error at ..."
        if (text != message.npos) message.erase(0, text + 2);
        constexpr size_t longest = 200;
        if (message.size() > longest) message = message.substr(0, longest) + "...";
        return refuse_at(reached_ == source_.data() ? 0 : static_cast<size_t>(reached_ - source_.data()) - 1,
                         "not JSON: " + printable(message));
    }

private:
    enum class value { integer, text, octets, record, optional_record, slot, array, nothing };
    enum class hex_text { none, key, value, end };  // {"hex": "..."} in place of a text

    // An object that is open, and the member of it that is being read.
    struct frame {
        const record_type* type;
        char* contents;
        uint64_t seen;  // a bit for each field
        const field* current;
        uint32_t element;   // of the list: complete elements
        uint32_t capacity;  // of the list: elements that there is room for
        bool in_list;
    };

    // What may come next, and where it goes: an element's place is made by element() or record_at().
    struct target {
        value accepts;
        const field* member;      // null for the record itself
        const record_type* type;  // of a record
    };

    target expected() const {
        if (stack_.empty()) return {value::record, nullptr, &root_};
        const frame& top = stack_.back();
        const field& field = *top.current;
        switch (field.kind) {
            case field_kind::integer:
                return {value::integer, &field, nullptr};
            case field_kind::text:
                return {value::text, &field, nullptr};
            case field_kind::octets:
            case field_kind::fixed_octets:
                return {value::octets, &field, nullptr};
            case field_kind::nested:
                return {value::record, &field, field.nested};
            case field_kind::optional_nested:
                return {value::optional_record, &field, field.nested};
            default:
                break;
        }
        if (!top.in_list) return {value::array, &field, nullptr};
        if (top.element >= most_elements(field)) return {value::nothing, &field, nullptr};
        if (field.kind == field_kind::list_of_integers) return {value::integer, &field, nullptr};
        if (field.kind == field_kind::list_of_texts) return {value::text, &field, nullptr};
        return {field.kind == field_kind::slots ? value::slot : value::record, &field, field.nested};
    }

    std::string name_of(const target& at) const {
        switch (at.accepts) {
            case value::integer: {
                const range bounds = range_of(at.member->integer);
                return "a whole number from " + std::to_string(bounds.least) + " to " + std::to_string(bounds.most);
            }
            case value::text:
                return "a text: a string, or {\"hex\": \"...\"}";
            case value::octets:
                return at.member->kind == field_kind::fixed_octets
                           ? std::to_string(at.member->size) + " octets as a string of hexadecimal digits"
                           : "octets as a string of hexadecimal digits";
            case value::array:
                return at.member->kind == field_kind::slots
                           ? "an array of at most " + std::to_string(at.member->size) + " elements"
                           : "an array";
            case value::nothing:
                return "at most " + std::to_string(most_elements(*at.member)) + " elements";
            default: {
                const std::string what = is_uuid(*at.type) ? "a UUID such as \"6ba7b810-9dad-11d1-80b4-00c04fd430c8\""
                                                           : "an object (" + std::string(at.type->name) + ")";
                return at.accepts == value::record ? what : what + " or null";
            }
        }
    }

    // Where the value goes that is not a record: a member, or a new element of the list.
    void* element(const target& at) {
        frame& top = stack_.back();
        if (!top.in_list) return top.contents + at.member->offset;
        return new_element(top);
    }

    // Where the record goes: the structure itself, a member, or a new element; behind a pointer it is made here.
    void* record_at(const target& at) {
        if (at.member == nullptr) return contents_;
        frame& top = stack_.back();
        char* member = top.contents + at.member->offset;
        switch (at.member->kind) {
            case field_kind::nested:
                return member;
            case field_kind::optional_nested:
                return place<void*>(member, 0) = zeroed(at.type->size);
            case field_kind::slots:
                return place<void*>(member, top.element * sizeof(void*)) = zeroed(at.type->size);
            case field_kind::list_of_pointers: {
                void* made = zeroed(at.type->size);
                try {
                    return place<void*>(new_element(top), 0) = made;
                } catch (...) {
                    std::free(made);
                    throw;
                }
            }
            default:
                return new_element(top);
        }
    }

    // A zeroed element at the end of the list, counted at once so that it is released in any case.
    void* new_element(frame& top) {
        const field& field = *top.current;
        const size_t size = field.element_octets();
        char*& elements = place<char*>(top.contents, field.offset);
        if (top.element == top.capacity) {
            const size_t wanted = top.capacity == 0 ? 1 : size_t{top.capacity} * 2;
            void* grown = std::realloc(elements, wanted * size);
            if (grown == nullptr) throw std::bad_alloc();
            elements = static_cast<char*>(grown);
            top.capacity = static_cast<uint32_t>(std::min<size_t>(wanted, UINT32_MAX));
        }
        void* made = elements + top.element * size;
        std::memset(made, 0, size);
        store_integer(top.contents + field.count_offset, field.count, static_cast<int32_t>(top.element + 1));
        return made;
    }

    // A value is complete.
    bool done() {
        if (stack_.empty() || !stack_.back().in_list) return true;
        ++stack_.back().element;
        return true;
    }

    static uint64_t most_elements(const field& field) {
        if (field.kind == field_kind::slots) return field.size;
        return field.count.octets == 2 ? UINT16_MAX : UINT32_MAX;
    }

    struct range {
        int64_t least;
        int64_t most;
    };
    static range range_of(integer_type type) {
        const unsigned bits = 8u * type.octets - (type.is_signed ? 1 : 0);
        const int64_t most = (int64_t{1} << bits) - 1;
        return {type.is_signed ? -most - 1 : 0, most};
    }

    bool refuse_range(const target& at, const std::string& number) {
        return refuse("found " + number + ", which is out of range, expected " + name_of(at));
    }

    bool integer(number_integer_t number, const std::string& shown_as) {
        const target at = expected();
        if (at.accepts != value::integer) return refuse_type(at, "a number");
        const range bounds = range_of(at.member->integer);
        if (number < bounds.least || number > bounds.most) return refuse_range(at, shown_as);
        store_integer(element(at), at.member->integer, static_cast<int32_t>(number));
        return done();
    }

    bool octets(const target& at, const string_t& digits) {
        unsigned char* to = nullptr;
        frame& top = stack_.back();
        const size_t count = digits.size() / 2;
        if (at.member->kind == field_kind::fixed_octets) {
            if (digits.size() != size_t{at.member->size} * 2)
                return refuse("found " + in_quotes(digits) + ", expected " + name_of(at));
            to = reinterpret_cast<unsigned char*>(top.contents) + at.member->offset;
        } else if (count > UINT32_MAX) {
            return refuse("found too many octets, expected at most 4294967295");
        } else if (count != 0) {
            to = static_cast<unsigned char*>(zeroed(count));
            place<unsigned char*>(top.contents, at.member->offset) = to;
            store_integer(top.contents + at.member->count_offset, at.member->count, static_cast<int32_t>(count));
        }
        if (!read_hex(digits, to)) return refuse("found " + in_quotes(digits) + ", expected " + name_of(at));
        return done();
    }

    bool hex_value(const string_t& digits) {
        std::string text(digits.size() / 2, 0);
        if (!read_hex(digits, reinterpret_cast<unsigned char*>(text.data())))
            return refuse("found " + in_quotes(digits) + ", expected octets as a string of hexadecimal digits");
        if (text.find('\0') != text.npos) return refuse("found a zero octet, expected a text: it would end there");
        place<char*>(element(expected()), 0) = copy_text(text);
        hex_ = hex_text::end;
        return true;
    }

    // Members mostly come in the order of the fields.
    static const field* find(const frame& top, std::string_view name) {
        const uint32_t count = top.type->field_count;
        uint32_t at = top.current == nullptr ? 0 : static_cast<uint32_t>(top.current - top.type->fields) + 1;
        for (uint32_t i = 0; i < count; ++i, ++at) {
            if (at >= count) at = 0;
            if (name == top.type->fields[at].name) return &top.type->fields[at];
        }
        return nullptr;
    }

    bool refuse_member(const record_type& type, const string_t& name) {
        std::vector<std::string_view> names;
        stack_.back().current = nullptr;  // the path is the object's
        for (const field& field : type) {
            if (field.count_name != nullptr && name == field.count_name)
                return refuse("found a member " + in_quotes(name) + ", expected none: it follows from \"" + field.name +
                              "\"");
            names.push_back(field.name);
        }
        return refuse("found a member " + in_quotes(name) + ", expected one of " + type.name + suggestion(name, names));
    }

    // Texts that are missing are empty, in records that are there because they are embedded too.
    static void fill_texts(const record_type& type, char* contents, uint64_t seen) {
        for (const field& field : type) {
            if ((seen >> (&field - type.fields) & 1) != 0) continue;
            if (field.kind == field_kind::text) place<char*>(contents, field.offset) = copy_text("");
            if (field.kind == field_kind::nested) fill_texts(*field.nested, contents + field.offset, 0);
        }
    }

    bool refuse_type(const target& at, std::string found) {
        if (at.accepts == value::nothing) found = "one element more";
        if (hex_ != hex_text::none)
            return refuse("found " + found + ", expected octets as a string of hexadecimal digits");
        return refuse("found " + found + ", expected " + name_of(at));
    }

    bool refuse(const std::string& message) { return refuse_at(token_start(), message); }

    bool refuse_at(size_t offset, const std::string& message) {
        error_.offset = offset;
        error_.message = message;
        const std::string_view before = source_.substr(0, offset);
        const size_t line_start = before.rfind('\n') + 1;  // npos + 1 is 0
        for (char c : before.substr(0, line_start))
            error_.line += c == '\n';
        for (char c : before.substr(line_start))
            error_.column += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        path_builder path;
        for (const frame& open : stack_) {
            if (open.current == nullptr) continue;
            path.member(open.current->name);
            if (open.in_list) path.element(open.element);
        }
        error_.path = path.text();
        return false;
    }

    // The lexer has read the token, and behind a number one character more.
    size_t token_start() const {
        const char* const begin = source_.data();
        const char* end = reached_;
        const auto in_number = [](char c) { return std::strchr("+-.0123456789eE", c) != nullptr && c != 0; };
        if (end == begin) return 0;
        const char last = end[-1];
        if (last == '"') {
            const char* at = end - 1;
            for (bool opening = false; at != begin && !opening;) {
                if (*--at != '"') continue;
                const char* slash = at;
                while (slash != begin && slash[-1] == '\\')
                    --slash;
                opening = (at - slash) % 2 == 0;
            }
            return static_cast<size_t>(at - begin);
        }
        const std::string_view read(begin, static_cast<size_t>(end - begin));
        for (std::string_view word : {"true", "false", "null"})
            if (read.size() >= word.size() && read.substr(read.size() - word.size()) == word)
                return read.size() - word.size();
        const bool bracket = last == '{' || last == '[' || last == '}' || last == ']';
        const char* number = end;
        if (!in_number(last) && number - begin > 1 && in_number(number[-2])) --number;
        if (bracket && (number == end)) return read.size() - 1;
        while (number != begin && in_number(number[-1]))
            --number;
        return static_cast<size_t>(number - begin);
    }

    const std::string_view source_;
    const char* reached_;
    const record_type& root_;
    void* const contents_;
    json_error& error_;
    std::vector<frame> stack_;
    hex_text hex_ = hex_text::none;
};

}  // namespace

bool read_json(std::string_view text, const record_type& type, void* contents, json_error& error) {
    record_builder builder(text, type, contents, error);
    const text_iterator begin{text.data(), builder.reached()};
    const text_iterator end{text.data() + text.size(), builder.reached()};
    return json::sax_parse(begin, end, &builder);
}

}  // namespace zr::tool
