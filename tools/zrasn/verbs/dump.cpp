// dump: any BER as a tree.
#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include <unistd.h>

#include "base/color.h"
#include "base/file_output.h"
#include "base/library.h"
#include "base/limited_output.h"
#include "base/window_output.h"
#include "input/input.h"
#include "json/base/envelope.h"
#include "json/base/text.h"
#include "json/base/text_output.h"
#include "json/ber/asn1_types.h"
#include "json/ber/element_words.h"
#include "json/ber/nested_scanner.h"
#include "json/ber/record_guide.h"
#include "json/ber/scanner.h"
#include "json/ber/value.h"
#include "json/describe/tree.h"
#include "verbs/each_input.h"
#include "verbs/explanation.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

using role = record_place::role;

// Levels that are indented; deeper ones are numbered, so that the lines of a deep tree stay short.
constexpr size_t most_indents = 32;

// Octets after which memory of a mapped file is given back.
constexpr size_t look_behind = size_t{4} << 20;

class tree_writer {
public:
    tree_writer(const octets_input& in, const dump_options& options)
        : in_(in),
          begin_(static_cast<size_t>(std::min<uint64_t>(options.offset, in.size()))),
          header_(begin_ + (has_header(in.data() + begin_, in.size() - begin_) ? envelope_header_octets : 0)),
          most_levels_(options.depth),
          values_(options.whole ? value_size::whole : value_size::cut),
          scanner_(in.data(), header_, in.size()),
          guide_(options.record),
          record_(options.record),
          file_(""),
          columns_(options.whole ? 0 : window_columns()),
          window_(file_, columns_),
          out_(columns_ == 0 ? static_cast<output&>(file_) : window_,
               options.whole ? UINT64_MAX : most_shown(in.size() - begin_)),
          in_color_(use_color(options.color, STDOUT_FILENO)),
          guard_(options.record, options.secrets) {
        for (uint64_t rest = in.size() / 100000000; rest != 0; rest /= 10)
            ++offset_width_;
    }

    int run() {
        blanks(offset_width_ - 8);
        out_.write("  offset  hdr     length  class    tag  form\n");
        if (header_ != begin_) envelope(begin_, 0);
        size_t given_back = 0;
        for (ber_item item; scanner_.next(item);) {
            if (item.depth == 0 && item.offset != header_ && record_ != nullptr && !behind_) end_of_record(item.offset);
            line(item);
            if (item.offset - given_back < look_behind) continue;
            given_back = item.offset;
            in_.forget(item.offset);
        }
        close(0);
        if (in_.size() == header_) damage(0, header_, "no element");
        out_.flush();
        file_.close();
        if (out_.left_out() != 0)
            std::fprintf(stderr, "%s: %s more (--whole shows all)\n", in_.label().c_str(),
                         counted(out_.left_out(), "line").c_str());
        if (problems_ == 0) return exit_good;
        std::fprintf(stderr, "%s: %zu problem%s, %llu octet%s not read\n", in_.label().c_str(), problems_,
                     problems_ == 1 ? "" : "s", static_cast<unsigned long long>(unread_), unread_ == 1 ? "" : "s");
        return exit_refused;
    }

private:
    void envelope(size_t offset, size_t depth) {
        columns(offset, envelope_header_octets);
        blanks(32);
        indent(depth);
        out_.write("envelope, version ");
        write_number(out_, in_.data()[offset + envelope_version_at]);
        out_.put('\n');
    }

    void line(const ber_item& item) {
        close(item.depth);
        switch (item.kind) {
            case ber_kind::element:
                return element(item);
            case ber_kind::end_of_contents:
                if (item.depth >= most_levels_) return;
                start(item);
                out_.write("end-of-contents\n");
                return;
            case ber_kind::missing_end:
                return damage(item.depth, item.offset, "end-of-contents octets (00 00) are missing");
            case ber_kind::unreadable:
                unread_ += item.length;
                guide_.lose_rest();
                return damage(item.depth, item.offset, damage_text(item.damage), ": ", item.length,
                              item.length == 1 ? " octet not read" : " octets not read");
        }
    }

    void element(const ber_item& item) {
        const record_place place = scanner_.is_inside() ? record_place{} : guide_.visit(item);
        const unsigned char* const contents = in_.data() + item.offset + item.header;
        const bool hides = guard_.hides(item, place);
        const bool may_hold = !hides && most_levels_ != 0 && item.depth < most_levels_ - 1;
        const nested_scanner::found held = may_hold ? scanner_.enter(item) : nested_scanner::found::nothing;
        if (item.depth < most_levels_) element_line(item, place, contents, hides, held);
        if (held == nested_scanner::found::envelope) envelope(item.offset + item.header, item.depth + 1);
        if (const std::string misfit = misfit_words(item, place); !misfit.empty())
            damage(item.depth + 1, item.offset, misfit);
        if (const std::string wrong = damage_words(item, contents); !wrong.empty())
            damage(item.depth + 1, item.offset, wrong);
    }

    void element_line(const ber_item& item, const record_place& place, const unsigned char* contents, bool hides,
                      nested_scanner::found held) {
        start(item);
        label(place);
        out_.write(type_words(item, place));
        if (place.record != nullptr && place.what != role::record) {
            out_.write(" (");
            out_.write(place.record->name);
            out_.put(')');
        }
        if (hides) {
            if (!item.opens()) out_.write(" ***");
        } else if (held != nested_scanner::found::nothing) {
            out_.write(held == nested_scanner::found::envelope ? " with an envelope" : " with BER");
        } else if (!item.opens() && item.length != 0) {
            out_.put(' ');
            write_element_value(out_, item, place, contents, values_);
        }
        out_.put('\n');
    }

    void columns(size_t offset, size_t header) {
        write_number(out_, offset, offset_width_);
        column<5>(header);
    }

    // What is too wide for its column is a star there: no line shifts, and the number is told behind.
    template <size_t width>
    void column(uint64_t number) {
        constexpr uint64_t limit = [] {
            uint64_t power = 1;
            for (size_t i = 1; i < width; ++i)
                power *= 10;
            return power;
        }();
        if (number < limit) return write_number(out_, number, width);
        blanks(width - 1);
        out_.put('*');
    }

    // The columns in front of the tree, and the branch of it. The length is the one that is written.
    void start(const ber_item& item) {
        columns(item.offset, item.header);
        if (item.indefinite)
            out_.write("      indef");
        else
            column<11>(item.declared);
        out_.write("  ");
        out_.write(class_of(item.cls).column);
        out_.put(' ');
        if (item.damage == ber_damage::tag_too_large)
            out_.write("     ?");
        else
            column<6>(item.tag);
        out_.write(item.constructed ? "  cons  " : "  prim  ");
        indent(item.depth);
    }

    void blanks(size_t count) {
        static constexpr char many[65] = "                                                                ";
        static_assert(2 * most_indents < sizeof(many));
        out_.write(many, count);
    }

    void indent(size_t depth) {
        blanks(2 * std::min(depth, most_indents));
        if (depth <= most_indents) return;
        out_.write("(level ");
        write_number(out_, depth);
        out_.write(") ");
    }

    void label(const record_place& place) {
        if (place.what != role::record && place.what != role::member && place.what != role::element) return;
        color("\x1B[36m");
        if (place.what == role::record) {
            out_.write(place.record->name);
        } else if (place.what == role::member) {
            out_.write(place.member->name);
        } else {
            out_.put('[');
            write_number(out_, place.index);
            out_.put(']');
        }
        color("\x1B[0m");
        out_.put(' ');
    }

    void end_of_record(size_t offset) {
        behind_ = true;
        close(0);
        damage(0, offset, "the record ends here: ", "", in_.size() - offset,
               in_.size() - offset == 1 ? " octet more" : " octets more");
    }

    void close(size_t depth) {
        guide_.leave(depth, [this](size_t level, const field& field) {
            start_damage(level);
            out_.write(field.name);
            out_.write(" (");
            out_.write(type_of(field));
            out_.write(") is missing");
            end_damage();
        });
    }

    void damage(size_t depth, size_t offset, std::string_view what) {
        start_damage(depth, offset);
        out_.write(what);
        end_damage();
    }
    void damage(size_t depth, size_t offset, std::string_view what, std::string_view and_, uint64_t number,
                std::string_view unit) {
        start_damage(depth, offset);
        out_.write(what);
        out_.write(and_);
        write_number(out_, number);
        out_.write(unit);
        end_damage();
    }
    void start_damage(size_t depth) {
        ++problems_;
        blanks(offset_width_ + 37);
        indent(depth);
        color("\x1B[31m");
        out_.write("! ");
    }
    void start_damage(size_t depth, size_t offset) {
        ++problems_;
        write_number(out_, offset, offset_width_);
        blanks(37);
        indent(depth);
        color("\x1B[31m");
        out_.write("! ");
    }
    void end_damage() {
        color("\x1B[0m");
        out_.put('\n');
    }

    void color(const char* sequence) {
        if (in_color_) out_.write(sequence);
    }

    const octets_input& in_;
    const size_t begin_;        // the octet from which on the input is looked at
    const size_t header_;       // the octet behind the header of an envelope there
    const size_t most_levels_;  // that are shown
    const value_size values_;
    nested_scanner scanner_;
    record_guide guide_;
    const record_type* record_;
    file_output file_;
    const size_t columns_;  // of the window; 0 where lines are not cut
    window_output window_;
    limited_output out_;  // to one of these two
    bool in_color_;
    secret_guard guard_;
    size_t offset_width_ = 8;
    bool behind_ = false;  // the record has ended
    size_t problems_ = 0;
    uint64_t unread_ = 0;
};

// The same as JSON, at most 100 times as long as the input; what is left out is counted there.
int dump_json(const octets_input& in, const dump_options& options) {
    text_output tree;
    const auto begin = static_cast<size_t>(std::min<uint64_t>(options.offset, in.size()));
    const size_t size = in.size() - begin;
    write_tree(tree, in.data() + begin, size,
               {options.record, options.secrets, options.depth, size < SIZE_MAX / 100 - 4096 ? 100 * size : SIZE_MAX,
                options.whole ? value_size::whole : value_size::cut});
    file_output out("");
    out.paint_json(options.color);
    out.write(tree.text());
    out.put('\n');
    out.close();
    constexpr std::string_view no_problem = "\"problems\":0}";
    const std::string_view end = tree.text().substr(tree.size() - std::min(tree.size(), no_problem.size()));
    return end == no_problem ? exit_good : exit_refused;
}

}  // namespace

int run_dump(const dump_options& options) {
    return for_each_file(options.files, [&](const std::string& file) {
        const octets_input in = read_input(file, options.from, wanted_input::anything);
        if (options.files.size() > 1 && !options.json) std::printf("%s:\n", in.label().c_str());
        std::fflush(stdout);
        const int code = options.json ? dump_json(in, options) : tree_writer(in, options).run();
        if (code != exit_good)
            if (const std::string hint = input_hint(in, options.record); !hint.empty())
                std::fprintf(stderr, "hint: %s\n", hint.c_str());
        if (in.remark().empty()) return code;
        std::fprintf(stderr, "%s\n", in.remark().c_str());
        return static_cast<int>(exit_refused);
    });
}

}  // namespace zr::tool
