#include "lines.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include <unistd.h>

#include "input.h"
#include "json_writer.h"
#include "status_text.h"

namespace zr::tool {

line_reader::line_reader(const std::string& file)
    : label_(input_label(file)), file_(file == "-" ? stdin : std::fopen(file.c_str(), "re")) {
    if (file_ == nullptr) throw input_error{exit_io, label_ + ": " + std::strerror(errno)};
}

line_reader::~line_reader() {
    std::free(line_);
    if (file_ != stdin) std::fclose(file_);
}

bool line_reader::next(std::string_view& line) {
    for (;;) {
        errno = 0;
        const ssize_t count = getline(&line_, &room_, file_);
        if (count < 0) {
            if (errno == ENOMEM) throw std::bad_alloc();
            if (std::ferror(file_) != 0) throw input_error{exit_io, label_ + ": " + std::strerror(errno)};
            return false;
        }
        ++number_;
        line = {line_, static_cast<size_t>(count)};
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.remove_suffix(1);
        if (line.find_first_not_of(" \t") != line.npos) return true;
    }
}

void write_line_refusal(output& out, const line_refusal& refusal) {
    out.write("{\"error\":{\"status\":");
    if (refusal.status == 0) {
        out.write("null,\"name\":null");
    } else {
        out.write(std::to_string(refusal.status) + ",\"name\":\"");
        out.write(status_name(refusal.status));
        out.put('"');
    }
    out.write(",\"offset\":" + std::to_string(refusal.offset) + ",\"path\":");
    write_json_string(out, refusal.path);
    out.write(",\"message\":");
    write_json_string(out, refusal.message);
    out.write("}}\n");
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
