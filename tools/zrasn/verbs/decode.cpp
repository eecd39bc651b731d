// decode: envelopes to JSON.
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "asn1/status.h"
#include "base/file_output.h"
#include "base/heap.h"
#include "base/library.h"
#include "input/input.h"
#include "input/line_reader.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/ber/losses.h"
#include "json/document/record_writer.h"
#include "verbs/each_input.h"
#include "verbs/explanation.h"
#include "verbs/line_answers.h"
#include "verbs/record_choice.h"
#include "verbs/record_filter.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

// Records that stand one on a line, each decoded on its own.
class line_decoder {
public:
    line_decoder(const decode_options& options, const std::string& file, file_output& out)
        : options_(options), type_(*options.record), out_(out), lines_(file, out_) {
        if (options.asked != nullptr) filter_.emplace(type_, *options.asked, options.version, json_layout::one_line);
    }

    int run() {
        for (std::string_view line; lines_.next(line);) {
            if (lines_.too_long())
                refuse(0, "line_too_long", line_reader::default_most, {}, "longer than 1 GiB");
            else if (octets_of(line))
                decode();
        }
        return progress_.any_refused() || !all_given_ ? exit_refused : exit_good;
    }

private:
    void refuse(int status, const char* reason, uint64_t offset, std::string_view path, std::string_view message) {
        const std::string all = "line " + std::to_string(lines_.number()) + ": " + std::string(message);
        write_line_refusal(out_, {status, reason, lines_.number(), offset, path, all});
        progress_.refused();
    }

    bool octets_of(std::string_view line) {
        text_decoder decoder(options_.from);
        if (octets_.size() < line.size()) octets_.resize(line.size());
        const char* at = line.data();
        count_ = decoder.decode(at, at + line.size(), octets_.data(), octets_.size());
        if (!decoder.refused() && decoder.finish()) return true;
        refuse(0, "bad_text", static_cast<uint64_t>(at - line.data()), {}, decoder.problem());
        return false;
    }

    void decode() {
        const auto report = [this](const loss& lost) {
            print_loss(lines_.label() + ": line " + std::to_string(lines_.number()), lost);
            all_given_ = false;
        };
        if (filter_) {
            switch (filter_->take(octets_.data(), count_, report)) {
                case record_filter::outcome::whole:
                    break;
                case record_filter::outcome::chosen:
                    out_.write(filter_->text());
                    out_.put('\n');
                    [[fallthrough]];
                case record_filter::outcome::unwanted:
                    return progress_.accepted();
                case record_filter::outcome::refused:
                    return refuse(filter_->status());
            }
        }
        record_holder record(type_);
        const int status = decode_octets(type_, octets_.data(), count_, record.get(), options_.version);
        if (status != zr_ok) return refuse(status);
        write_json(out_, type_, record.get(), json_layout::one_line, options_.secrets);
        out_.put('\n');
        progress_.accepted();
        find_losses(octets_.data(), count_, envelope_header_size(octets_.data(), count_), type_, record.get(), report);
    }
    void refuse(int status) {
        const explanation refused = explain(octets_.data(), count_, type_, status, options_.version);
        refuse(refused.status, refused.reason, refused.offset, refused.path, refused.message);
    }

    const decode_options& options_;
    const record_type& type_;
    file_output& out_;
    line_reader lines_;
    std::optional<record_filter> filter_;
    line_progress progress_;
    std::vector<unsigned char> octets_;  // of the line, as many as `count_`
    size_t count_ = 0;
    bool all_given_ = true;
};

// Envelopes in files, each decoded on its own.
class file_decoder {
public:
    explicit file_decoder(const decode_options& options)
        : options_(options),
          layout_(options.compact ? json_layout::one_line : json_layout::indented),
          chooser_({options.version, options.color, options.secrets}) {
        if (options.asked != nullptr) filter_.emplace(*options.record, *options.asked, options.version, layout_);
    }

    int run() {
        const int code = for_each_record(options_, [this](const octets_input& in) { return decode(in); });
        if (out_) out_->close();
        return code;
    }

private:
    // What was read before is shown before what is said of this.
    void flush() {
        if (out_) out_->flush();
    }

    int decode(const octets_input& in) {
        const record_type* type = options_.record;
        if (type == nullptr) {
            flush();
            type = chooser_.choose(in);
        }
        if (type == nullptr) return exit_refused;
        bool all_given = true;
        const auto report = [&](const loss& lost) {
            flush();
            print_loss(in.label(), lost);
            all_given = false;
        };
        if (filter_) {
            switch (filter_->take(in.data(), in.size(), report)) {
                case record_filter::outcome::whole:
                    break;
                case record_filter::outcome::unwanted:
                    return exit_good;
                case record_filter::outcome::chosen:
                    out().write(filter_->text());
                    out().put('\n');
                    return all_given ? exit_good : exit_refused;
                case record_filter::outcome::refused:
                    return refuse(in, *type, filter_->status());
            }
        }
        expect_record(in.size());
        record_holder record(*type);
        const int status = decode_octets(*type, in.data(), in.size(), record.get(), options_.version);
        if (status != zr_ok) return refuse(in, *type, status);
        write_json(out(), *type, record.get(), layout_, options_.secrets);
        out().put('\n');
        find_losses(in.data(), in.size(), envelope_header_size(in.data(), in.size()), *type, record.get(), report);
        return all_given ? exit_good : exit_refused;
    }

    int refuse(const octets_input& in, const record_type& type, int status) {
        flush();
        print_explanation(in, &type, explain(in.data(), in.size(), type, status, options_.version), options_.color,
                          options_.secrets);
        return exit_refused;
    }

    file_output& out() {
        if (!out_) out_.emplace(options_.output).paint_json(options_.color);
        return *out_;
    }

    const decode_options& options_;
    const json_layout layout_;
    record_chooser chooser_;
    std::optional<record_filter> filter_;
    std::optional<file_output> out_;  // where the first record has been decoded
};

}  // namespace

int run_decode(const decode_options& options) {
    if (!options.lines) return file_decoder(options).run();
    file_output out(options.output);
    out.paint_json(options.color);
    const int code =
        for_each_file(options.files, [&](const std::string& file) { return line_decoder(options, file, out).run(); });
    out.close();
    return code;
}

}  // namespace zr::tool
