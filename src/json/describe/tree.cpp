#include "json/describe/tree.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "json/base/envelope.h"
#include "json/base/text.h"
#include "json/ber/asn1_types.h"
#include "json/ber/element_words.h"
#include "json/ber/nested_scanner.h"
#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"
#include "json/document/string_writer.h"

namespace zr::json {

namespace {

using role = record_place::role;

class tree_writer {
public:
    tree_writer(text_output& out, const unsigned char* data, size_t size, const tree_options& options)
        : out_(out),
          data_(data),
          header_(has_header(data, size) ? envelope_header_octets : 0),
          options_(options),
          scanner_(data, header_, size),
          guide_(options.record),
          guard_(options.record, options.secrets) {}

    void write(size_t size) {
        out_.put('{');
        if (header_ != 0) envelope(0);
        out_.write("\"elements\":[");
        open_.push_back({});
        for (ber_item item; scanner_.next(item);) {
            close(item.depth);
            if (item.depth == 0 && item.offset != header_ && options_.record != nullptr && !behind_) {
                behind_ = true;
                remark(0, item.offset, "the record ends here: " + counted(size - item.offset, "octet") + " more");
            }
            add(item);
        }
        close(0);
        if (size == header_) remark(0, size, "no element");
        end_level();
        out_.write(",\"problems\":" + std::to_string(problems_) + "}");
    }

private:
    // A list of elements that is shown and open.
    struct level {
        bool any = false;     // has elements
        uint64_t hidden = 0;  // elements in it, at any depth, that are not shown
        std::string missing;  // members that the element around it has not, as JSON
    };

    void envelope(size_t offset) {
        out_.write("\"envelope\":{\"offset\":" + std::to_string(offset) +
                   ",\"header\":4,\"version\":" + std::to_string(data_[offset + envelope_version_at]) + "},");
    }

    void add(const ber_item& item) {
        switch (item.kind) {
            case ber_kind::element:
                return add_element(item);
            case ber_kind::end_of_contents:
                return;
            case ber_kind::missing_end:
                return remark(item.depth, item.offset, "end-of-contents octets (00 00) are missing");
            case ber_kind::unreadable:
                guide_.lose_rest();
                return remark(item.depth, item.offset,
                              damage_text(item.damage) + (": " + counted(item.length, "octet")) + " not read");
        }
    }

    void add_element(const ber_item& item) {
        const record_place place = scanner_.is_inside() ? record_place{} : guide_.visit(item);
        const bool hides = guard_.hides(item, place);
        const unsigned char* const contents = data_ + item.offset + item.header;
        const std::string misfit = misfit_words(item, place), damage = damage_words(item, contents);
        problems_ += !misfit.empty();
        problems_ += !damage.empty();
        if (!start_element(item.depth)) return;
        out_.write("{\"offset\":" + std::to_string(item.offset) + ",\"header\":" + std::to_string(item.header));
        if (item.indefinite)
            out_.write(",\"indefinite\":true");
        else if (item.declared != UINT64_MAX)
            out_.write(",\"length\":" + std::to_string(item.declared));
        if (item.cls != 0) out_.write(",\"class\":\"" + std::string(class_of(item.cls).name) + "\"");
        out_.write(",\"tag\":" + std::to_string(item.tag));
        if (item.constructed) out_.write(",\"constructed\":true");
        out_.write(",\"type\":\"" + type_words(item, place) + "\"");
        name(place);
        if (!misfit.empty() || !damage.empty()) {
            out_.write(",\"problems\":[");
            if (!misfit.empty()) write_json_string(out_, misfit);
            if (!misfit.empty() && !damage.empty()) out_.put(',');
            if (!damage.empty()) write_json_string(out_, damage);
            out_.put(']');
        }
        const bool may_hold = !hides && item.depth + 1 < options_.most_levels;
        const nested_scanner::found held = may_hold ? scanner_.enter(item) : nested_scanner::found::nothing;
        if (!item.opens() && held == nested_scanner::found::nothing) {
            value(item, place, contents, hides);
            return out_.put('}');
        }
        out_.put(',');
        if (held == nested_scanner::found::envelope) envelope(item.offset + item.header);
        out_.write("\"children\":[");
        open_.push_back({});
    }

    void name(const record_place& place) {
        if (place.what == role::member) out_.write(",\"member\":\"" + std::string(place.member->name) + "\"");
        if (place.what == role::element) out_.write(",\"index\":" + std::to_string(place.index));
        if (place.record != nullptr) out_.write(",\"record\":\"" + std::string(place.record->name) + "\"");
    }

    void value(const ber_item& item, const record_place& place, const unsigned char* contents, bool hides) {
        out_.write(",\"value\":");
        if (hides) return write_json_string(out_, not_shown);
        // A whole one of up to eight characters for each octet, of which some are escaped.
        const size_t left = options_.most_text - std::min(out_.size(), options_.most_text);
        const bool fits = left / 10 > item.length;
        text_output words;
        write_element_value(words, item, place, contents, fits ? options_.values : value_size::cut);
        write_json_string(out_, words.text());
    }

    // Whether an element at the depth is shown; then what separates it from the one before is written.
    bool start_element(size_t depth) {
        level& list = open_.back();
        if (open_.size() != depth + 1 || open_.size() > options_.most_levels || out_.size() >= options_.most_text) {
            ++list.hidden;
            return false;
        }
        if (list.any) out_.put(',');
        return list.any = true;
    }

    // What is wrong where no element is.
    void remark(size_t depth, size_t offset, const std::string& what) {
        ++problems_;
        if (!start_element(depth)) return;
        out_.write("{\"offset\":" + std::to_string(offset) + ",\"problems\":[");
        write_json_string(out_, what);
        out_.write("]}");
    }

    // Ends the lists of elements that enclose no more: `depth` elements are open around what comes.
    void close(size_t depth) {
        guide_.leave(depth, [this](size_t around, const field& member) {
            ++problems_;
            close_lists(around);
            level& ended = open_.back();
            if (open_.size() == around + 1)
                ended.missing += (ended.missing.empty() ? "\"" : ",\"") + std::string(member.name) + "\"";
        });
        close_lists(depth);
    }
    void close_lists(size_t depth) {
        for (; open_.size() > depth + 1; open_.pop_back()) {
            end_level();
            out_.put('}');
        }
    }
    void end_level() {
        out_.put(']');
        const level& ended = open_.back();
        if (!ended.missing.empty()) out_.write(",\"missing\":[" + ended.missing + "]");
        if (ended.hidden != 0) out_.write(",\"hidden\":" + std::to_string(ended.hidden));
    }

    text_output& out_;
    const unsigned char* data_;
    const size_t header_;  // octets of the envelope's
    const tree_options& options_;
    nested_scanner scanner_;
    record_guide guide_;
    secret_guard guard_;
    std::vector<level> open_;  // the outermost list, and that of each element that is open and shown
    bool behind_ = false;      // the record has ended
    uint64_t problems_ = 0;
};

}  // namespace

void write_tree(text_output& out, const unsigned char* data, size_t size, const tree_options& options) {
    tree_writer(out, data, size, options).write(size);
}

}  // namespace zr::json
