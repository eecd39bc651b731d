#include "verbs/line_answers.h"
#include "asn1/status_text.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <unistd.h>

#include "base/library.h"
#include "json/document/string_writer.h"

namespace zr::tool {

void write_line_refusal(output& out, const line_refusal& refusal) {
    out.write("{\"error\":{\"status\":");
    if (refusal.status == 0) {
        out.write("null,\"name\":null");
    } else {
        out.write(std::to_string(refusal.status) + ",\"name\":\"");
        out.write(status_name(refusal.status));
        out.put('"');
    }
    out.write(",\"reason\":\"" + std::string(refusal.reason));
    out.write("\",\"line\":" + std::to_string(refusal.line));
    out.write(",\"offset\":" + std::to_string(refusal.offset) + ",\"path\":");
    write_json_string(out, refusal.path);
    out.write(",\"message\":");
    write_json_string(out, refusal.message);
    out.write("}}\n");
}

const record_type* take_record(std::string_view& line) {
    const size_t first = std::min(line.find_first_not_of(" \t"), line.size());
    const size_t end = std::min(line.find_first_of(" \t", first), line.size());
    const record_type* const named = find_record(line.substr(first, end - first));
    if (named != nullptr) line.remove_prefix(end);
    return named;
}

line_progress::line_progress()
    : terminal_(isatty(STDERR_FILENO) != 0), next_(std::chrono::steady_clock::now() + std::chrono::seconds(2)) {}

line_progress::~line_progress() {
    if (shown_) std::fputc('\n', stderr);
}

void line_progress::count(bool refused) {
    ++records_;
    refused_ += refused ? 1 : 0;
    if (!terminal_ || records_ % 256 != 0) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + std::chrono::milliseconds(200);
    shown_ = true;
    std::fprintf(stderr, "\r%llu records, %llu refused", static_cast<unsigned long long>(records_),
                 static_cast<unsigned long long>(refused_));
}

}  // namespace zr::tool
