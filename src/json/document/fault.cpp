// explain_fault by nlohmann's parser, which says what it has found and what it has expected. No other file of the
// library knows it.
#include "json/document/fault.h"

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

#include "json/base/text.h"

namespace zr::json {

namespace {

using nlohmann::json;

// Takes all JSON, up to the fault.
class fault_finder {
public:
    using number_integer_t = json::number_integer_t;
    using number_unsigned_t = json::number_unsigned_t;
    using number_float_t = json::number_float_t;
    using string_t = json::string_t;
    using binary_t = json::binary_t;

    fault_finder(std::string_view text, json_fault& fault) : text_(text), fault_(fault) {}

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool number_integer(number_integer_t) { return true; }
    bool number_unsigned(number_unsigned_t) { return true; }
    bool number_float(number_float_t, const string_t&) { return true; }
    bool binary(binary_t&) { return true; }
    bool string(const string_t&) { return true; }
    bool key(const string_t&) { return true; }
    bool start_object(size_t) { return true; }
    bool end_object() { return true; }
    bool start_array(size_t) { return true; }
    bool end_array() { return true; }

    // `read` counts the end of the text as a character.
    bool parse_error(size_t read, const std::string&, const json::exception& exception) {
        std::string message = exception.what();
        // "[json.exception.parse_error.101] parse error at line 1, column 1: what"
        for (std::string_view front : {"] ", ": "})
            if (const size_t behind = message.find(front); behind != message.npos) message.erase(0, behind + 2);
        constexpr size_t longest = 200;
        if (message.size() > longest) message.replace(longest, std::string::npos, "...");
        read = std::min(read, text_.size());
        fault_ = {read == 0 ? 0 : read - 1, "not JSON: " + printable(message)};
        return false;
    }

private:
    const std::string_view text_;
    json_fault& fault_;
};

}  // namespace

json_fault explain_fault(std::string_view text, size_t at) {
    json_fault fault;
    fault_finder finder(text, fault);
    if (!json::sax_parse(text.data(), text.data() + text.size(), &finder)) return fault;
    // A zero octet ends the text for this parser, and it reads numbers such as 0e999.
    const bool zero = at < text.size() && text[at] == '\0';
    return {at, zero ? "not JSON: found a zero octet, expected the end of the text"
                     : "not JSON: a number that is too long"};
}

}  // namespace zr::json
