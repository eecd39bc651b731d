#include "json/document/record_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "json/base/path.h"
#include "json/base/secrets.h"
#include "json/base/suggest.h"
#include "json/base/text.h"
#include "json/document/events.h"
#include "json/document/parser.h"
#include "json/document/place.h"
#include "json/document/scalars.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

using takes = json_place::takes;

// record_builder fills a structure from the events of its JSON.
class record_builder {
public:
    record_builder(const record_type& type, void* structure, json_error& error, const decode_limits& limits)
        : root_(type), structure_(structure), error_(error), left_(limits) {
        stack_.reserve(8);  // most records nest no deeper
    }

    // The parser calls it with a constant kind each time.
    [[gnu::always_inline]] bool on(const json_event& event) {
        offset_ = event.offset;
        switch (event.kind) {
            case json_kind::null:
                return null();
            case json_kind::boolean:
            case json_kind::number:
            case json_kind::string:
                return scalar(event);
            case json_kind::begin_object:
                return begin_object();
            case json_kind::key:
                return key(event.text);
            case json_kind::end_object:
                return end_object();
            case json_kind::begin_array:
                return begin_array();
            case json_kind::end_array:
                stack_.back().in_list = false;
                return true;
        }
        return false;
    }

    // Of the member that is being read.
    std::string path() const {
        path_builder path;
        for (const frame& open : stack_) {
            if (open.current == nullptr) continue;
            path.member(open.current->name);
            const bool counted = open.in_element || (hex_ == hex_text::end && &open == &stack_.back());
            if (open.in_list) path.element(open.list.count() - (counted ? 1 : 0));
        }
        return path.text();
    }

private:
    enum class hex_text { none, key, value, end };  // {"hex": "..."}

    // An object that is open, and the member of it that is being read.
    struct frame {
        const record_type* type;
        void* structure;
        uint64_t seen;  // a bit for each field
        const field* current;
        member_filler list;  // the member, when it is a list
        bool in_list;
        bool in_element;  // the list's last value is an object that is open
    };

    json_place place() const {
        if (stack_.empty()) return place_of_record(root_);
        const frame& top = stack_.back();
        return top.in_list ? place_of_element(*top.current, top.list.count()) : place_of_member(*top.current);
    }

    // Puts a value where it belongs.
    template <class Add>
    auto fill(Add&& add) {
        frame& top = stack_.back();
        if (top.in_list) return add(top.list);
        member_filler member(*top.current, top.structure);
        return add(member);
    }
    void* add_record() {
        if (stack_.empty()) return structure_;
        return fill([](member_filler& member) { return member.add_record(); });
    }

    // Whether a value may be added whose block has so many octets.
    bool spend(size_t octets) {
        if (!stack_.empty() && stack_.back().in_list) {
            if (left_.elements == 0) return refuse_limit(decode_limit::elements, "elements");
            --left_.elements;
            octets += stack_.back().current->place_octets;
        }
        if (left_.heap < octets) return refuse_limit(decode_limit::heap, "octets in blocks");
        left_.heap -= octets;
        return true;
    }
    bool spend_record(const json_place& at) {
        return spend(at.member != nullptr && is_by_pointer(*at.member) ? at.record->size : 0);
    }
    bool refuse_limit(decode_limit limit, const char* what) {
        error_.passed = limit;
        return refuse(std::string("found more ") + what + " than the limit, expected fewer");
    }

    bool null() {
        if (!place().or_null) return refuse_type("null");
        if (!spend(0)) return false;
        fill([](member_filler& member) { member.add_nothing(); });
        return true;
    }

    bool scalar(const json_event& event) {
        const json_place at = place();
        if (at.what == takes::scalar) {
            if (!spend(event.kind == json_kind::string ? event.text.size() + 1 : 0)) return false;
            if (at.member->secret && event.text == not_shown && hex_ == hex_text::none) error_.is_redacted = true;
            const bool read = fill([&](member_filler& member) {
                return hex_ == hex_text::none ? read_scalar(event, member, error_.message)
                                              : read_hex_form(event, member, error_.message);
            });
            if (!read) return refuse_here();
            if (hex_ != hex_text::none) hex_ = hex_text::end;
            return true;
        }
        if (at.what != takes::uuid || event.kind != json_kind::string) return refuse_type(in_words(event));
        uuid_t id{};
        if (!parse_uuid(event.text, id)) return refuse("found " + in_quotes(event.text) + ", expected " + describe(at));
        if (!spend_record(at)) return false;
        std::memcpy(add_record(), &id, sizeof(id));
        return true;
    }

    bool begin_object() {
        const json_place at = place();
        if (at.what == takes::scalar && hex_ == hex_text::none && has_hex_form(*at.member)) {
            hex_ = hex_text::key;
            return true;
        }
        if (hex_ != hex_text::none || at.what != takes::object) return refuse_type("an object");
        if (stack_.size() >= left_.depth) return refuse_limit(decode_limit::depth, "records that enclose each other");
        if (!spend_record(at)) return false;
        void* structure = add_record();
        if (!stack_.empty()) stack_.back().in_element = stack_.back().in_list;
        stack_.push_back({at.record, structure, 0, nullptr, {}, false, false});
        return true;
    }

    bool key(std::string_view name) {
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
            return true;
        }
        const frame& top = stack_.back();
        fill_missing(*top.type, top.structure, top.seen);
        stack_.pop_back();
        if (!stack_.empty()) stack_.back().in_element = false;
        return true;
    }

    bool begin_array() {
        const json_place at = place();
        if (hex_ != hex_text::none || at.what != takes::array) return refuse_type("an array");
        frame& top = stack_.back();
        top.in_list = true;
        top.list = member_filler(*top.current, top.structure);
        return true;
    }

    // Names are short: a call costs more than the loop.
    static bool is_name(const char* field, std::string_view name) {
        for (char c : name)
            if (*field++ != c || c == 0) return false;
        return *field == 0;
    }

    // Members mostly come in the order of the fields.
    static const field* find(const frame& top, std::string_view name) {
        const uint32_t count = top.type->field_count;
        uint32_t at = top.current == nullptr ? 0 : static_cast<uint32_t>(top.current - top.type->fields) + 1;
        for (uint32_t i = 0; i < count; ++i, ++at) {
            if (at >= count) at = 0;
            const field& found = top.type->fields[at];
            if (is_name(found.name, name)) return has_member(found.value) ? &found : nullptr;
        }
        return nullptr;
    }

    bool refuse_member(const record_type& type, std::string_view name) {
        std::vector<std::string_view> names;
        stack_.back().current = nullptr;  // the path is the object's
        for (const field& field : type) {
            if (field.count_name != nullptr && name == field.count_name)
                return refuse("found a member " + in_quotes(name) + ", expected none: it follows from \"" + field.name +
                              "\"");
            if (has_member(field.value)) names.push_back(field.name);
        }
        return refuse("found a member " + in_quotes(name) + ", expected one of " + type.name + suggestion(name, names));
    }

    // In records that are there because they are embedded too.
    static void fill_missing(const record_type& type, void* structure, uint64_t seen) {
        for (const field& field : type) {
            if ((seen >> (&field - type.fields) & 1) != 0 || field.held != holding::one) continue;
            member_filler member(field, structure);
            if (field.value == value_kind::record)
                fill_missing(*field.record, member.add_record(), 0);
            else
                add_missing_scalar(member);
        }
    }

    bool refuse_type(std::string_view found) {
        const json_place at = place();
        if (at.what == takes::nothing) found = "one element more";
        return refuse("found " + std::string(found) + ", expected " +
                      (hex_ != hex_text::none ? describe_hex_form() : describe(at)));
    }

    bool refuse(std::string message) {
        error_.message = std::move(message);
        return refuse_here();
    }
    bool refuse_here() {
        error_.offset = offset_;
        return false;
    }

    const record_type& root_;
    void* const structure_;
    json_error& error_;
    size_t offset_ = 0;  // of the event
    std::vector<frame> stack_;
    hex_text hex_ = hex_text::none;
    decode_limits left_;  // of what may still be added
};

}  // namespace

bool read_json(std::string_view text, const record_type& type, void* structure, json_error& error,
               const decode_limits& limits) {
    record_builder builder(type, structure, error, limits);
    json_fault fault;
    if (parse_events(text, builder, fault)) return true;
    if (!fault.message.empty()) {
        error.offset = fault.offset;
        error.message = fault.message;
        // What the parser has read last may be a secret.
        if (has_secrets(type)) error.message.resize(std::min(error.message.size(), error.message.find("; last read")));
    }
    error.path = builder.path();
    const std::string_view before = text.substr(0, error.offset);
    const size_t line_start = before.rfind('\n') + 1;  // npos + 1 is 0
    error.line +=
        static_cast<size_t>(std::count(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(line_start), '\n'));
    for (char c : before.substr(line_start))
        error.column += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return false;
}

}  // namespace zr::json
