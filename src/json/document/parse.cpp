// parse_json over nlohmann's event interface. No other file of the program knows that library.
#include <algorithm>
#include <cstdint>

#include <nlohmann/json.hpp>

#include "json/base/text.h"
#include "json/document/events.h"

namespace zr::json {

namespace {

using json = nlohmann::json;

constexpr bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

constexpr bool is_of_number(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// adapter hands the events on, each with its place: the first character behind the one before it that is neither blank
// nor separates values.
class adapter {
public:
    using number_integer_t = json::number_integer_t;
    using number_unsigned_t = json::number_unsigned_t;
    using number_float_t = json::number_float_t;
    using string_t = json::string_t;
    using binary_t = json::binary_t;

    adapter(std::string_view text, json_events& receiver, json_fault& fault)
        : text_(text), receiver_(receiver), fault_(fault) {
        if (text.substr(0, 3) == "\xEF\xBB\xBF") behind_ = 3;
    }

    bool null() { return word(json_kind::null, 4); }
    bool boolean(bool flag) { return word(json_kind::boolean, flag ? 4 : 5); }
    bool number_integer(number_integer_t) { return number(); }
    bool number_unsigned(number_unsigned_t) { return number(); }
    bool number_float(number_float_t, const string_t&) { return number(); }
    bool binary(binary_t&) { return false; }  // in binary forms only
    bool string(const string_t& text) { return quoted(json_kind::string, text); }
    bool key(const string_t& text) { return quoted(json_kind::key, text); }
    bool start_object(size_t) { return word(json_kind::begin_object, 1); }
    bool end_object() { return word(json_kind::end_object, 1); }
    bool start_array(size_t) { return word(json_kind::begin_array, 1); }
    bool end_array() { return word(json_kind::end_array, 1); }

    // `read` counts the end of the text as a character.
    bool parse_error(size_t read, const std::string&, const json::exception& exception) {
        std::string message = exception.what();
        // "[json.exception.parse_error.101] parse error at line 1, column 1: what"
        for (std::string_view front : {"] ", ": "})
            if (const size_t behind = message.find(front); behind != message.npos) message.erase(0, behind + 2);
        constexpr size_t longest = 200;
        if (message.size() > longest) message = message.substr(0, longest) + "...";
        read = std::min(read, text_.size());
        fault_ = {read == 0 ? 0 : read - 1, "not JSON: " + printable(message)};
        return false;
    }

    // A zero octet ends the text for the lexer; not so here.
    bool is_at_end() {
        while (behind_ != text_.size() && is_blank(text_[behind_]))
            ++behind_;
        if (behind_ == text_.size()) return true;
        fault_ = {behind_, "not JSON: found a zero octet, expected the end of the text"};
        return false;
    }

private:
    size_t start() const {
        size_t at = behind_;
        while (at != text_.size() && (is_blank(text_[at]) || text_[at] == ',' || text_[at] == ':'))
            ++at;
        return at;
    }
    bool word(json_kind kind, size_t count) {
        const size_t at = start();
        behind_ = at + count;
        return receiver_.on({kind, at, text_.substr(at, count)});
    }
    // The lexer has read one character more.
    bool number() {
        const size_t at = start();
        for (behind_ = at; behind_ != text_.size() && is_of_number(text_[behind_]);)
            ++behind_;
        return receiver_.on({json_kind::number, at, text_.substr(at, behind_ - at)});
    }
    bool quoted(json_kind kind, const string_t& text) {
        const size_t at = start();
        behind_ = text_.find('"', at + 1);
        if (text_[behind_ - 1] == '\\')  // which may belong to an escape
            for (behind_ = at + 1; text_[behind_] != '"';)
                behind_ += text_[behind_] == '\\' ? 2 : 1;
        ++behind_;
        return receiver_.on({kind, at, text});
    }

    const std::string_view text_;
    size_t behind_ = 0;  // the last event
    json_events& receiver_;
    json_fault& fault_;
};

}  // namespace

bool parse_json(std::string_view text, json_events& receiver, json_fault& fault) {
    adapter events(text, receiver, fault);
    return json::sax_parse(text.data(), text.data() + text.size(), &events) && events.is_at_end();
}

}  // namespace zr::json
