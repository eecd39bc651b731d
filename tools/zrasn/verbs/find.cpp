// find: the envelopes in any file.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>

#include "asn1/framing.h"
#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/hex.h"
#include "json/base/text.h"
#include "json/ber/record_match.h"
#include "verbs/each_input.h"
#include "verbs/verbs.h"

namespace zr::tool {

namespace {

constexpr size_t look_behind = size_t{4} << 20;     // octets after which memory of a mapped file is given back
constexpr size_t first_look = 64;                   // octets that are looked at first, where no length tells
constexpr uint64_t free_looks = uint64_t{1} << 20;  // octets that looks in vain may cost besides those of the file
constexpr uint64_t looks_per_octet = 16;

// text_source has the octets that hexadecimal digits or base64 at a place of a file stand for, as far as they are
// wanted. Line ends may stand between them.
class text_source {
public:
    text_source(std::string_view text, input_form form)
        : decoder_(form), rest_(text), is_hex_(form == input_form::hex) {}

    // The first octets, `wanted` of them or as many as there are.
    size_t fill(size_t wanted) {
        while (octets_.size() < wanted && !rest_.empty()) {
            const size_t end = run(2 * (wanted - octets_.size()) + 2);
            const char* at = rest_.data();
            const size_t before = octets_.size();
            octets_.resize(std::min(wanted, before + end));
            const size_t room = octets_.size() - before;
            octets_.resize(before + decoder_.decode(at, at + end, octets_.data() + before, room));
            const auto taken = static_cast<size_t>(at - rest_.data());
            rest_.remove_prefix(taken);
            if (taken == 0) rest_ = {};
        }
        return std::min(wanted, octets_.size());
    }
    const unsigned char* data() const { return octets_.data(); }

private:
    // Characters at the front that are of the form, or line ends between such.
    size_t run(size_t most) const {
        size_t end = 0;
        for (; end != std::min(most, rest_.size()); ++end) {
            const char c = rest_[end];
            if (is_hex_ ? hex_digit(c) < 0 : base64_digit(c) < 0)
                if (c != '\n' && c != '\r') break;
        }
        return end;
    }

    text_decoder decoder_;
    std::string_view rest_;
    std::vector<unsigned char> octets_;
    bool is_hex_;
};

class finder {
public:
    explicit finder(const find_options& options) : options_(options), records_(known_records()), out_("") {
        unsigned char header[6] = {};
        put_envelope_header(header, static_cast<int>(options.version));
        header[envelope_header_octets] = sequence_identifier;
        begin_.assign(header, header + envelope_header_octets + 1);
        hex_ = hex_text(header, begin_.size());
        hex_.erase(std::remove(hex_.begin(), hex_.end(), ' '), hex_.end());
        // Of 04, version, AC, DC, 30 the first 38 bits are whole digits of base64.
        static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        uint64_t bits = 0;
        for (unsigned char octet : header)
            bits = bits << 8 | octet;
        for (unsigned i = 0; i != 6; ++i)
            base64_ += digits[bits >> (42 - 6 * i) & 63];
    }

    int run() {
        if (options_.json) out_.paint_json(options_.color);
        if (!options_.extract.empty() && ::mkdir(options_.extract.c_str(), 0777) != 0 && errno != EEXIST)
            throw output_error{file_label(options_.extract) + ": " + std::strerror(errno)};
        const int code = for_each_file(options_.files, [this](const std::string& file) {
            const octets_input in = read_input(file, input_form::raw, wanted_input::anything);
            search(in);
            return exit_good;
        });
        if (options_.json) out_.write(any_ ? "\n]\n" : "[]\n");
        out_.close();
        return code == exit_good && !any_ ? static_cast<int>(exit_refused) : code;
    }

private:
    // How a place of the file may begin an envelope.
    input_form form_at(const unsigned char* at, size_t left) const {
        const auto begins = [&](const std::string& text) {
            if (left < text.size()) return false;
            for (size_t i = 0; i != text.size(); ++i)
                if ((at[i] | (text == base64_                ? 0
                              : at[i] >= 'A' && at[i] <= 'Z' ? 0x20
                                                             : 0)) != static_cast<unsigned char>(text[i]))
                    return false;
            return true;
        };
        if (*at == envelope_header_octets && left >= begin_.size() &&
            std::memcmp(at, begin_.data(), begin_.size()) == 0)
            return input_form::raw;
        if (*at == '0' && begins(hex_)) return input_form::hex;
        return *at == 'B' && begins(base64_) ? input_form::base64 : input_form::automatic;
    }

    void search(const octets_input& in) {
        size_t given_back = 0;
        spent_ = 0;
        skipped_ = 0;
        for (size_t at = 0; at < in.size();) {
            const input_form form = form_at(in.data() + at, in.size() - at);
            at += form == input_form::automatic ? 1 : look(in, at, form);
            if (at - given_back < look_behind) continue;
            given_back = std::min(at, in.size());
            in.forget(given_back);
        }
        if (skipped_ == 0) return;
        out_.flush();
        std::fprintf(stderr, "%s: %s of an envelope with no whole envelope behind\n", in.label().c_str(),
                     counted(skipped_, "header").c_str());
    }

    // Octets of the file to go on behind.
    size_t look(const octets_input& in, size_t at, input_form form) {
        const size_t left = in.size() - at;
        std::optional<text_source> text;
        if (form != input_form::raw)
            text.emplace(std::string_view(reinterpret_cast<const char*>(in.data()) + at, left), form);
        // What was looked at in vain may be as much as this; then looks are short until the search has caught up.
        const bool may_be_long = spent_ <= free_looks + looks_per_octet * at;
        envelope_framing framing(most_encoding_octets);
        size_t there = 0;
        zr::framing looked = framing::incomplete;
        for (size_t wanted = first_look; looked == zr::framing::incomplete; wanted = std::max(2 * there, wanted)) {
            const size_t before = there;
            there = text ? text->fill(wanted) : std::min(left, wanted);
            if (there == before || (there > first_look && !may_be_long)) break;
            looked = framing.look(text ? text->data() : in.data() + at, there);
            if (looked == zr::framing::incomplete) {
                const size_t missing = framing.missing();
                if (missing > left) break;
                wanted = std::max(wanted, there + missing);
            }
        }
        if (looked != zr::framing::complete) {
            ++skipped_;
            spent_ += text || there > first_look ? there : 0;
            return begin_.size();
        }
        const size_t count = framing.length();
        const unsigned char* const octets = text ? text->data() : in.data() + at;
        const size_t header = envelope_header_size(octets, count);
        const record_match match = match_records(octets + header, count - header, records_);
        found(in, at, form, octets, count, match);
        const size_t length = form == input_form::raw ? count : form == input_form::hex ? 2 * count : count / 3 * 4;
        if (!match.fitting.empty()) return length;
        // Octets that no record has may be a header by chance, with others behind it.
        if (!may_be_long) return length;
        spent_ += count;
        return begin_.size();
    }

    void found(const octets_input& in, size_t at, input_form form, const unsigned char* octets, size_t count,
               const record_match& match) {
        const char* const word = form == input_form::raw ? "raw" : form == input_form::hex ? "hex" : "base64";
        std::string names;
        for (const record_type* type : match.fitting)
            names += (names.empty() ? "" : options_.json ? "\", \"" : ", ") + std::string(type->name);
        if (options_.json) {
            out_.write(any_ ? ",\n" : "[\n");
            out_.write("    {\"file\": \"" + json_text(in.label()) + "\", \"offset\": " + std::to_string(at) +
                       ", \"length\": " + std::to_string(count) + ", \"form\": \"" + word + "\", \"records\": [" +
                       (names.empty() ? "" : "\"" + names + "\"") + "]}");
        } else {
            out_.write(in.label() + ":" + std::to_string(at) + ": " + counted(count, "octet") +
                       (form == input_form::raw ? "" : std::string(" as ") + word) + ": " +
                       (names.empty() ? "no record" : names) + "\n");
        }
        any_ = true;
        if (options_.extract.empty() || match.fitting.empty()) return;
        const std::string number = options_.files.size() > 1 ? std::to_string(++extracted_) + "-" : "";
        file_output file(options_.extract + "/" + number + std::to_string(at) + ".ber");
        file.write(octets, count);
        file.close();
    }

    // Labels are printable: a quotation mark and a backslash are all that has to be escaped.
    static std::string json_text(const std::string& label) {
        std::string text;
        for (char c : label) {
            if (c == '"' || c == '\\') text += '\\';
            text += c;
        }
        return text;
    }

    const find_options& options_;
    const std::vector<const record_type*> records_;
    file_output out_;
    std::vector<unsigned char> begin_;  // of a record's envelope: as octets, and as texts
    std::string hex_;
    std::string base64_;
    uint64_t spent_ = 0;    // octets that were looked at in vain
    uint64_t skipped_ = 0;  // headers with no whole envelope behind
    uint64_t extracted_ = 0;
    bool any_ = false;
};

}  // namespace

int run_find(const find_options& options) { return finder(options).run(); }

}  // namespace zr::tool
