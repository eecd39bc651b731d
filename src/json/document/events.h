// JSON as a row of events: what stands between whatever reads JSON and whatever wants it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zr::json {

enum class json_kind { null, boolean, number, string, begin_object, key, end_object, begin_array, end_array };

struct json_event {
    json_kind kind;
    size_t offset;          // octets of the text before it
    std::string_view text;  // of a string or key: what it says, in UTF-8; of a number or boolean: as it is written
};

// What the event begins or is, in a message: "found " and this.
inline std::string_view in_words(const json_event& event) {
    switch (event.kind) {
        case json_kind::null:
        case json_kind::boolean:
            return event.text;
        case json_kind::number:
            return "a number";
        case json_kind::string:
        case json_kind::key:
            return "a string";
        case json_kind::begin_object:
        case json_kind::end_object:
            return "an object";
        case json_kind::begin_array:
        case json_kind::end_array:
            break;
    }
    return "an array";
}

// json_events receives the events of one value in turn. The texts are gone with the next event.
class json_events {
public:
    // Whether to go on.
    virtual bool on(const json_event& event) = 0;

protected:
    ~json_events() = default;
};

// Where a text stops being JSON (RFC 8259), and why; the message is fit for a terminal.
struct json_fault {
    size_t offset = 0;
    std::string message;  // empty: the receiver has stopped
};

// parse_json reads one value, and nothing behind it, whatever its depth and with no more than 16 octets for each level.
// False when the text is no JSON or the receiver has stopped. Throws what the receiver throws, and std::bad_alloc.
bool parse_json(std::string_view text, json_events& receiver, json_fault& fault);

}  // namespace zr::json
