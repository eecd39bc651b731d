// roundtrip: records are decoded, encoded again and compared; what differs is counted, and no value is shown.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "asn1/status.h"
#include "base/file_output.h"
#include "base/library.h"
#include "input/input.h"
#include "input/line_reader.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/ber/deviations.h"
#include "json/document/record_reader.h"
#include "verbs/each_input.h"
#include "verbs/line_answers.h"
#include "verbs/record_choice.h"
#include "verbs/verbs.h"
#include "zrasn/guard.h"

namespace zr::tool {

namespace {

// The member that a way leads to, whichever elements it goes by: "entries[].id" for "entries[3].id". What repeats
// itself, in records that contain themselves, stands there once, so that there are only so many members.
std::string member_of(std::string_view path) {
    std::string member;
    if (const size_t cut = path.rfind(" ... "); cut != path.npos) {
        path.remove_prefix(cut + 5);
        path.remove_prefix(std::min(path.size(), path.find('.') + 1));
    }
    std::string last;
    while (!path.empty()) {
        const std::string_view step = path.substr(0, path.find('.'));
        path.remove_prefix(std::min(path.size(), step.size() + 1));
        std::string name(step.substr(0, step.find('[')));
        if (name.size() != step.size()) name += "[]";
        if (name == last) continue;
        member += (member.empty() ? "" : ".") + name;
        last = std::move(name);
    }
    return member;
}

struct counts {
    uint64_t records = 0;
    uint64_t same = 0;
    uint64_t deviating = 0;
    uint64_t refused = 0;

    void add(const counts& other) {
        records += other.records;
        same += other.same;
        deviating += other.deviating;
        refused += other.refused;
    }
};

enum class finding_kind { deviation, refused };
struct tally : counts {
    // How often each finding was made, by its kind, key and member.
    std::map<std::tuple<finding_kind, std::string, std::string>, uint64_t> findings;

    void refuse(const char* key, std::string_view path) {
        ++refused;
        ++findings[{finding_kind::refused, key, member_of(path)}];
    }
};

class comparison {
public:
    explicit comparison(const roundtrip_options& options) : options_(options) {}

    tally& of(const record_type* type) {
        tally& found = tallies_[type];
        ++found.records;
        return found;
    }

    // Octets with the envelope's header or without.
    void octets(const record_type& type, const unsigned char* data, size_t size) {
        tally& to = of(&type);
        record_holder record(type);
        const decode_report strict = decode_report_of(type, data, size, record.get(), options_.version, true);
        if (strict.status == 0) return compare(to, type, data, size, record.get());
        const decode_report plain = decode_report_of(type, data, size, record.get(), options_.version);
        if (plain.status != 0) return to.refuse(plain.reason(), plain.path);
        ++to.deviating;
        find_deviations(data, size, envelope_header_size(data, size), type, record.get(), [&](const deviation& found) {
            ++to.findings[{finding_kind::deviation, found.key, member_of(found.path)}];
        });
    }

    // JSON, of which the library makes the octets.
    void json(const record_type& type, std::string_view text) {
        record_holder record(type);
        json_error error;
        if (!read_json(text, type, record.get(), error)) return of(&type).refuse("bad_json", error.path);
        encoding made;
        const int status = type.encode(made.out(), record.get(), static_cast<int>(options_.version));
        if (status != zr_ok) return of(&type).refuse(status_key(status), {});
        octets(type, made.data(), made.size());
    }

    bool all_the_same() const { return total().same == total().records; }

    void print(output& out) const {
        each([&](const char* name, const tally& found) {
            out.write(std::string(name) + ": " + in_words(found) + "\n");
            for (const auto& [finding, count] : found.findings) {
                const auto& [kind, key, member] = finding;
                std::string line = "    " + word_of(kind) + " " + key;
                line.resize(std::max<size_t>(34, line.size() + 1), ' ');
                const std::string digits = std::to_string(count);
                line.append(10 - std::min<size_t>(10, digits.size()), ' ');
                line += digits;
                if (!member.empty()) line.append("  ").append(member);
                line += '\n';
                out.write(line);
            }
        });
        out.write("all: " + in_words(total()) + "\n");
    }

    // Names, keys and members are of letters that JSON takes as they are.
    void print_json(output& out) const {
        out.write("{\"records\": [");
        bool any = false;
        each([&](const char* name, const tally& found) {
            out.write(std::string(any ? ",\n    " : "\n    ") + "{\"record\": \"" + name + "\", " + in_json(found) +
                      ", \"findings\": [");
            any = true;
            bool any_finding = false;
            for (const auto& [finding, count] : found.findings) {
                const auto& [kind, key, member] = finding;
                out.write(any_finding ? ",\n        {\"kind\": \"" : "\n        {\"kind\": \"");
                out.write(word_of(kind));
                out.write("\", \"key\": \"" + key);
                out.write("\", \"member\": \"" + member);
                out.write("\", \"count\": " + std::to_string(count) + "}");
                any_finding = true;
            }
            out.write("]}");
        });
        out.write("],\n    " + in_json(total()) + "}\n");
    }

private:
    static std::string word_of(finding_kind kind) { return kind == finding_kind::refused ? "refused" : "deviation"; }
    static std::string in_words(const counts& found) {
        return std::to_string(found.records) + (found.records == 1 ? " record, " : " records, ") +
               std::to_string(found.same) + " the same, " + std::to_string(found.deviating) + " deviating, " +
               std::to_string(found.refused) + " refused";
    }
    static std::string in_json(const counts& found) {
        return "\"count\": " + std::to_string(found.records) + ", \"same\": " + std::to_string(found.same) +
               ", \"deviating\": " + std::to_string(found.deviating) +
               ", \"refused\": " + std::to_string(found.refused);
    }

    // What is accepted strictly is compared all the same: nothing here takes a reader's word for what a writer does.
    void compare(tally& to, const record_type& type, const unsigned char* data, size_t size, void* record) const {
        encoding written;
        const int status = type.encode(written.out(), record, static_cast<int>(options_.version));
        const size_t header = lacks_header(data, size) ? envelope_header_octets : 0;
        if (status == zr_ok && written.size() == size + header &&
            std::equal(data, data + size, written.data() + header)) {
            ++to.same;
            return;
        }
        ++to.deviating;
        ++to.findings[{finding_kind::deviation, status == zr_ok ? "other_octets" : "cannot_be_written", ""}];
    }

    counts total() const {
        counts all;
        for (const auto& found : tallies_)
            all.add(found.second);
        return all;
    }

    // The records in the registry's order, and what named none.
    template <class Visit>
    void each(const Visit& visit) const {
        const auto show = [&](const record_type* type, const char* name) {
            const auto found = tallies_.find(type);
            if (found != tallies_.end()) visit(name, found->second);
        };
        for (const record_module* module : modules())
            for (const record_type* type : *module)
                show(type, type->name);
        show(nullptr, "no record");
    }

    const roundtrip_options& options_;
    std::map<const record_type*, tally> tallies_;
};

int compare_lines(const roundtrip_options& options, const std::string& file, comparison& all, file_output& out) {
    line_reader lines(file, out);
    line_progress progress;
    std::vector<unsigned char> octets;
    for (std::string_view line; lines.next(line); progress.accepted()) {
        const record_type* const named = take_record(line);
        const record_type* const type = named != nullptr ? named : options.record;
        if (lines.too_long()) {
            all.of(type).refuse("line_too_long", {});
        } else if (type == nullptr) {
            all.of(nullptr).refuse("no_record", {});
        } else if (const size_t first = line.find_first_not_of(" \t\r");
                   first != line.npos && std::string_view("{[\"").find(line[first]) != std::string_view::npos) {
            all.json(*type, line);
        } else {
            text_decoder decoder(options.from);
            if (octets.size() < line.size()) octets.resize(line.size());
            const char* at = line.data();
            const size_t count = decoder.decode(at, at + line.size(), octets.data(), octets.size());
            if (decoder.refused() || !decoder.finish())
                all.of(type).refuse("bad_text", {});
            else
                all.octets(*type, octets.data(), count);
        }
    }
    return exit_good;
}

}  // namespace

int run_roundtrip(const roundtrip_options& options) {
    file_output out("");
    comparison all(options);
    record_chooser chooser({options.version, color_mode::never, secret_values::hidden});
    const auto compare = [&](const octets_input& in) -> int {
        const record_type* const type = options.record != nullptr ? options.record : chooser.choose(in);
        if (type == nullptr) return exit_refused;
        all.octets(*type, in.data(), in.size());
        return exit_good;
    };
    const int code =
        options.lines ? for_each_file(options.files,
                                      [&](const std::string& file) { return compare_lines(options, file, all, out); })
                      : for_each_record(options, compare);
    if (options.json) out.paint_json(options.color);
    if (options.json)
        all.print_json(out);
    else
        all.print(out);
    out.close();
    return code == exit_good && !all.all_the_same() ? exit_refused : code;
}

}  // namespace zr::tool
