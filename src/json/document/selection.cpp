#include "json/document/selection.h"

#include <algorithm>
#include <utility>

#include "asn1/status.h"
#include "json/base/envelope.h"
#include "json/base/members.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/ber/losses.h"
#include "json/document/record_writer.h"
#include "json/document/scalars.h"
#include "json/document/string_writer.h"
#include "json/document/uuid_text.h"

namespace zr::json {

namespace {

// Whether the value is no object in JSON.
bool is_scalar(const field& member) { return member.record == nullptr || is_uuid(*member.record); }

// Writes what a path leads to; false when the library would not write it so. A record is decoded by itself.
bool write_walked(json_pen& pen, const walked_value& at, secret_values secrets) {
    const field& member = at.member;
    if (member.secret && secrets == secret_values::hidden) {
        write_json_string(pen.out(), not_shown);
        return true;
    }
    if (member.record == nullptr) return write_contents(pen.out(), member, at.contents, at.length, pen.spaced());
    record_holder record(*member.record);
    if (decode_octets(*member.record, at.element, at.size, record.get()) != zr_ok) return false;
    bool all = true;
    find_losses(at.element, at.size, 0, *member.record, record.get(), [&all](const loss&) { all = false; });
    if (all) write_json(pen, *member.record, record.get(), secrets);
    return all;
}

class comparison {
public:
    static constexpr bool whole = false;

    comparison(const std::vector<member_path>& paths, const std::vector<std::string>& wanted, text_output& value,
               std::vector<bool>& holds)
        : paths_(paths), wanted_(wanted), value_(value), holds_(holds), left_(paths.size()) {
        holds_.assign(paths.size(), false);
    }

    bool value(const walked_value& at) {
        if (at.is_empty_slot) return true;
        if (at.member.value == value_kind::text) {
            const std::string_view text(reinterpret_cast<const char*>(at.contents), at.length);
            if (text.find('\0') != text.npos) return false;
            compare(text, at.paths, at.path_count);
            return true;
        }
        value_.clear();
        json_pen pen(value_, json_layout::one_line);
        if (!write_walked(pen, at, secret_values::shown)) return false;
        compare(value_.text(), at.paths, at.path_count);
        return true;
    }
    void open(const field*, bool) {}
    void close(bool) {}
    void absent(const field& member, const uint32_t* paths, size_t count) {
        if (member.record == nullptr) compare("\"\"", paths, count);  // octets
    }
    bool done() const { return left_ == 0 || fails_; }
    bool all_hold() const { return left_ == 0; }

private:
    void compare(std::string_view value, const uint32_t* paths, size_t count) {
        for (; count != 0; --count, ++paths) {
            if (holds_[*paths]) continue;
            if (value == wanted_[*paths]) {
                holds_[*paths] = true;
                --left_;
            } else if (is_alone(paths_[*paths])) {
                fails_ = true;
            }
        }
    }
    // Whether no other element can be at the path.
    static bool is_alone(const member_path& path) {
        return std::none_of(path.begin(), path.end(), [](const path_step& step) {
            return is_sequence_of(*step.member) && step.index == path_step::every;
        });
    }

    const std::vector<member_path>& paths_;
    const std::vector<std::string>& wanted_;
    text_output& value_;
    std::vector<bool>& holds_;
    size_t left_;
    bool fails_ = false;
};

class chosen_writer {
public:
    static constexpr bool whole = true;

    chosen_writer(output& out, json_layout layout, secret_values secrets) : pen_(out, layout), secrets_(secrets) {}

    bool value(const walked_value& at) {
        if (at.is_empty_slot) {
            ++open_.back().empty_slots;
            return true;
        }
        begin(at.member);
        return write_walked(pen_, at, secrets_);
    }
    void open(const field* member, bool is_list) {
        if (member != nullptr) begin(*member);
        // A list is a member. NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
        const bool row = is_list && member->value == value_kind::integer;
        if (row)
            pen_.out().put('[');
        else
            pen_.open(is_list ? '[' : '{');
        open_.push_back({is_list, row, false, 0});
    }
    void close(bool is_list) {
        if (open_.back().is_row)
            pen_.out().put(']');
        else
            pen_.close(is_list ? ']' : '}', !open_.back().any);
        open_.pop_back();
    }
    void absent(const field& member, const uint32_t*, size_t) {
        begin(member);
        if (member.secret && secrets_ == secret_values::hidden) return write_json_string(pen_.out(), not_shown);
        pen_.out().write(member.record != nullptr ? "null" : "\"\"");
    }
    static bool done() { return false; }

private:
    struct bracket {
        bool is_list;
        bool is_row;  // of numbers side by side
        bool any;
        uint32_t empty_slots;  // before what comes, not written yet: those behind the last used one are not
    };

    void begin(const field& member) {
        bracket& in = open_.back();
        for (; in.empty_slots != 0; --in.empty_slots) {
            pen_.separate(!in.any);
            in.any = true;
            pen_.out().write("null");
        }
        if (in.is_row)
            pen_.separate_in_row(!in.any);
        else
            pen_.separate(!in.any);
        in.any = true;
        if (!in.is_list) pen_.key(member.name);
    }

    json_pen pen_;
    const secret_values secrets_;
    std::vector<bracket> open_;
};

}  // namespace

bool selection::select(std::string_view path, std::string& message) {
    member_path read;
    if (!read_path(path, type_, read, message)) return false;
    selected_.push_back(std::move(read));
    return true;
}

bool selection::require(std::string_view condition, std::string& message) {
    const size_t equals = condition.find('=');
    if (equals == condition.npos) {
        message = in_quotes(condition) + " is not PATH=VALUE";
        return false;
    }
    const std::string_view path = condition.substr(0, equals), value = condition.substr(equals + 1);
    member_path read;
    if (!read_path(path, type_, read, message)) return false;
    const path_step& last = read.back();
    const field& member = *last.member;
    const std::string name = in_quotes(path);
    if (!is_scalar(member)) {
        message = name + " is an object: a condition is on one of its members";
        return false;
    }
    if (member.secret && secrets_ == secret_values::hidden) {
        message = name + " is a secret: a condition on it would tell its value (--show-secrets permits it)";
        return false;
    }
    text_output wanted;
    if (member.record != nullptr) {
        uuid_t id = {};
        char text[uuid_text_size];
        if (!parse_uuid(value, id)) {
            message = name + ": found " + in_quotes(value) + ", expected a UUID: 8-4-4-4-12 hexadecimal digits";
            return false;
        }
        format_uuid(&id, text);
        write_json_string(wanted, {text, sizeof(text)});
    } else {
        record_holder record(*last.record);
        member_filler filler(member, record.get());
        const json_kind kind = member.value == value_kind::integer ? json_kind::number : json_kind::string;
        if (!read_scalar({kind, 0, value}, filler, message)) {
            message.insert(0, name + ": ");
            return false;
        }
        if (member.value == value_kind::text)
            wanted.write(text_in(place_at(member, record.get(), 0)));
        else
            write_scalar(wanted, member, record.get(), value_at(member, record.get()), false);
    }
    wanted_.emplace_back(wanted.text());
    conditions_.push_back(std::move(read));
    return true;
}

selection::answer selection::holds(const unsigned char* data, size_t size) {
    comparison visitor(conditions_, wanted_, value_, met_);
    if (!condition_walk_.run(data, size, visitor)) return answer::other_form;
    return visitor.all_hold() ? answer::yes : answer::no;
}

selection::answer selection::write(output& out, const unsigned char* data, size_t size, json_layout layout) {
    chosen_writer visitor(out, layout, secrets_);
    return select_walk_.run(data, size, visitor) ? answer::yes : answer::other_form;
}

}  // namespace zr::json
