// encode: JSON to envelopes.
#include <cstdio>
#include <optional>
#include <string>

#include "asn1/status.h"
#include "asn1/status_text.h"
#include "asn1/zrasnapi.h"
#include "base/file_output.h"
#include "base/heap.h"
#include "base/library.h"
#include "input/input.h"
#include "input/line_reader.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "json/document/record_reader.h"
#include "verbs/each_input.h"
#include "verbs/line_answers.h"
#include "verbs/octets_output.h"
#include "verbs/source_line.h"
#include "verbs/verbs.h"
#include "zrasn/guard.h"

namespace zr::tool {

namespace {

// What became of one JSON value: octets, or why not.
struct encoded_record {
    bool good;
    int status;  // 0 when the text was refused
    json_error error;
    encoding octets;
};

encoded_record encode_text(std::string_view text, const encode_options& options) {
    encoded_record result{true, 0, {}, {}};
    record_holder record(*options.record);
    result.good = read_json(text, *options.record, record.get(), result.error);
    if (!result.good) return result;
    result.status = options.record->encode(result.octets.out(), record.get(), static_cast<int>(options.version));
    result.good = result.status == zr_ok;
    if (!result.good) result.error.message = status_text(result.status);
    return result;
}

bool looks_like_octets(std::string_view text) {
    if (text.size() > 1 && (text[0] == '\x04' || text[0] == '\x30') && text[1] != ' ') return true;
    return text.find_first_not_of("0123456789abcdefABCDEFx:, \t\r\n") == text.npos && text.size() > 8;
}

int refuse(const octets_input& in, const encode_options& options, const encoded_record& result) {
    const std::string_view text(reinterpret_cast<const char*>(in.data()), in.size());
    const std::string path = result.error.path.empty() ? options.record->name : result.error.path;
    if (result.status != zr_ok) {
        std::fprintf(stderr, "%s: %s: %s (%s, %d)\n", in.label().c_str(), options.record->name,
                     result.error.message.c_str(), status_name(result.status), result.status);
        return exit_refused;
    }
    std::fprintf(stderr, "%s:%zu:%zu: %s: %s\n", in.label().c_str(), result.error.line, result.error.column,
                 path.c_str(), result.error.message.c_str());
    if (!has_secrets(*options.record)) std::fputs(show_place(text, result.error.offset).c_str(), stderr);
    if (looks_like_octets(text))
        std::fprintf(stderr, "hint: this looks like an encoding: \"zrasn decode %s\" turns it into JSON\n",
                     options.record->name);
    return exit_refused;
}

int encode_lines(const encode_options& options, const std::string& file, file_output& out) {
    line_reader lines(file, out);
    line_progress progress;
    for (std::string_view line; lines.next(line);) {
        const auto where = [&] { return "line " + std::to_string(lines.number()); };
        if (lines.too_long()) {
            write_line_refusal(
                out,
                {0, "line_too_long", lines.number(), line_reader::default_most, {}, where() + ": longer than 1 GiB"});
            progress.refused();
            continue;
        }
        const encoded_record result = encode_text(line, options);
        if (result.good) {
            out.write_hex(result.octets.data(), result.octets.size());
            out.put('\n');
            progress.accepted();
        } else {
            const std::string message =
                where() + ", column " + std::to_string(result.error.column) + ": " + result.error.message;
            const char* reason = result.status != zr_ok ? status_key(result.status) : "bad_json";
            write_line_refusal(
                out, {result.status, reason, lines.number(), result.error.offset, result.error.path, message});
            progress.refused();
        }
    }
    return progress.any_refused() ? exit_refused : exit_good;
}

int encode_document(const encode_options& options, const std::string& file, std::optional<file_output>& out) {
    const octets_input in = read_input(file, input_form::raw, wanted_input::json);
    expect_record(in.size());
    const encoded_record result = encode_text({reinterpret_cast<const char*>(in.data()), in.size()}, options);
    if (!result.good) return refuse(in, options, result);
    if (!out) out.emplace(options.output);
    write_octets(*out, result.octets, options.hex, options.base64);
    return exit_good;
}

}  // namespace

int run_encode(const encode_options& options) {
    std::optional<file_output> out;
    if (options.lines) out.emplace(options.output);
    const int code = for_each_file(options.files, [&](const std::string& file) {
        return options.lines ? encode_lines(options, file, *out) : encode_document(options, file, out);
    });
    if (out) out->close();
    return code;
}

}  // namespace zr::tool
