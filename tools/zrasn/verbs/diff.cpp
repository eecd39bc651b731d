// diff: two values of a record, member by member.
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "asn1/status.h"
#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "json/base/envelope.h"
#include "json/base/path.h"
#include "json/base/record_holder.h"
#include "json/base/text.h"
#include "json/base/text_output.h"
#include "json/document/events.h"
#include "json/document/record_reader.h"
#include "json/document/record_writer.h"
#include "json/document/string_writer.h"
#include "verbs/explanation.h"
#include "verbs/record_choice.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

struct token {
    json_kind kind;
    std::string text;

    bool opens() const { return kind == json_kind::begin_object || kind == json_kind::begin_array; }
    bool closes() const { return kind == json_kind::end_object || kind == json_kind::end_array; }
};

// A value as the tokens of its JSON, in which members stand in their order.
class token_list final : public json_events {
public:
    bool on(const json_event& event) override {
        tokens_.push_back({event.kind, std::string(event.text)});
        return true;
    }
    const token& here() const { return tokens_[at_]; }
    bool at_end() const { return at_ == tokens_.size(); }
    void step() { ++at_; }
    // Steps over a value.
    void skip() {
        size_t depth = 0;
        do {
            depth += here().opens() ? 1 : 0;
            depth -= here().closes() ? 1 : 0;
            step();
        } while (depth != 0);
    }

private:
    std::vector<token> tokens_;
    size_t at_ = 0;
};

bool is_json(const octets_input& in) {
    const std::string_view text(reinterpret_cast<const char*>(in.data()), std::min<size_t>(in.size(), 4096));
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != text.npos && std::string_view("{[\"").find(text[first]) != std::string_view::npos;
}

class comparison {
public:
    comparison(const record_type& type, const diff_options& options)
        : out_(""), most_(options.all ? SIZE_MAX : 1000), secrets_(options.secrets) {
        levels_.push_back({&type, nullptr, false, false, 0, {}});
    }

    // Whether the values are the same.
    bool run(token_list& a, token_list& b) {
        while (!a.at_end()) {
            const token &left = a.here(), &right = b.here();
            level& top = levels_.back();
            if (left.closes() && right.closes()) {
                levels_.pop_back();
                a.step();
                b.step();
            } else if (left.closes() || right.closes()) {
                more(left.closes() ? b : a, left.closes() ? "> " : "< ");
            } else if (left.kind == json_kind::key) {
                top.key = left.text;
                top.member = member_of(top);
                a.step();
                b.step();
            } else if (left.opens() && left.kind == right.kind) {
                open(left.kind == json_kind::begin_array);
                a.step();
                b.step();
            } else {
                if (left.opens() || right.opens() || left.kind != right.kind || left.text != right.text) {
                    show("< ", left);
                    show("> ", right);
                    ++differences_;
                }
                a.skip();
                b.skip();
                ++top.index;
            }
        }
        if (differences_ > most_) out_.write(counted(differences_ - most_, "difference") + " more: --all shows them\n");
        out_.close();
        return differences_ == 0;
    }

private:
    // What is open: an object or an array, or what is around the value itself.
    struct level {
        const record_type* type;  // of the object, or of the objects in the array
        const field* member;      // of the object, that is compared, or of which the array is
        bool is_array;
        bool secret;
        size_t index;  // of the element that is compared
        std::string key;
    };

    static const field* member_of(const level& in) {
        if (in.type != nullptr)
            for (const field& member : *in.type)
                if (in.key == member.name) return &member;
        return nullptr;
    }

    void open(bool is_array) {
        level& top = levels_.back();
        const bool secret = top.secret || (top.member != nullptr && top.member->secret);
        const record_type* const type = top.member != nullptr ? top.member->record : top.type;
        ++top.index;
        levels_.push_back({type, is_array ? top.member : nullptr, is_array, secret, 0, {}});
    }

    void show(const char* side, const token& value) {
        if (differences_ >= most_) return;
        // Of a deep one the middle is left out, so that its cost has a bound.
        constexpr size_t at_each_end = 32;
        path_builder path;
        for (size_t i = 1; i != levels_.size(); ++i) {
            if (i == at_each_end && levels_.size() > 2 * at_each_end) {
                path.member("...");
                i = levels_.size() - at_each_end;
            }
            const level& each = levels_[i];
            if (each.is_array)
                path.element(i + 1 == levels_.size() ? each.index : each.index - 1);
            else
                path.member(each.key);
        }
        const level& top = levels_.back();
        out_.write(side);
        const std::string where = path.text();
        out_.write(where + (where.empty() ? "" : ": "));
        const bool hidden = top.secret || (top.member != nullptr && top.member->secret);
        if (hidden && secrets_ == secret_values::hidden)
            out_.write("\"***\"");
        else if (value.kind == json_kind::string)
            write_json_string(out_, value.text);
        else
            out_.write(value.opens() ? in_words({value.kind, 0, {}}) : std::string_view(value.text));
        out_.put('\n');
    }

    // Elements that only one array has.
    void more(token_list& of, const char* side) {
        while (!of.here().closes()) {
            show(side, of.here());
            ++differences_;
            of.skip();
            ++levels_.back().index;
        }
    }

    file_output out_;
    const size_t most_;  // differences that are shown
    const secret_values secrets_;
    std::vector<level> levels_;
    size_t differences_ = 0;
};

// One side: false, after a message, when it is no value of the record.
bool read_side(const octets_input& in, const record_type& type, const diff_options& options, token_list& tokens) {
    record_holder record(type);
    if (is_json(in)) {
        json_error error;
        if (!read_json({reinterpret_cast<const char*>(in.data()), in.size()}, type, record.get(), error)) {
            std::fprintf(stderr, "%s:%zu:%zu: %s: %s\n", in.label().c_str(), error.line, error.column,
                         error.path.empty() ? type.name : error.path.c_str(), error.message.c_str());
            return false;
        }
    } else if (const int status = decode_octets(type, in.data(), in.size(), record.get(), options.version);
               status != zr_ok) {
        print_explanation(in, &type, explain(in.data(), in.size(), type, status, options.version), options.color,
                          options.secrets);
        return false;
    }
    text_output text;
    write_json(text, type, record.get(), json_layout::one_line, secret_values::shown);
    json_fault fault;
    return parse_json(text.text(), tokens, fault);
}

}  // namespace

int run_diff(const diff_options& options) {
    try {
        const octets_input a = read_input(options.a, options.from, wanted_input::anything);
        const octets_input b = read_input(options.b, options.from, wanted_input::anything);
        const record_type* type = options.record;
        record_chooser chooser({options.version, options.color, options.secrets});
        if (type == nullptr && is_json(a) && is_json(b))
            std::fprintf(stderr, "zrasn: JSON does not tell its record: RECORD is missing\n");
        else if (type == nullptr)
            type = chooser.choose(is_json(a) ? b : a);
        token_list left, right;
        if (type == nullptr || !read_side(a, *type, options, left) || !read_side(b, *type, options, right))
            return diff_trouble;
        if (!comparison(*type, options).run(left, right)) return diff_differ;
        if (!is_json(a) && !is_json(b) &&
            std::string_view(reinterpret_cast<const char*>(a.data()), a.size()) !=
                std::string_view(reinterpret_cast<const char*>(b.data()), b.size()))
            std::fprintf(stderr, "the values are the same, the octets are not\n");
        return diff_same;
    } catch (const input_error& error) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
        return diff_trouble;
    }
}

}  // namespace zr::tool
