#include "base/file_output.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "base/library.h"
#include "json/base/text.h"

namespace zr::tool {

file_output::file_output(std::string file)
    : file_(file == "-" ? std::string() : std::move(file)), descriptor_(file_.empty() ? STDOUT_FILENO : -1) {
    at_ = block_;
    end_ = block_ + sizeof(block_);
}

file_output::~file_output() {
    if (descriptor_ > STDERR_FILENO) ::close(descriptor_);
}

void file_output::fail() const {
    throw output_error{(file_.empty() ? std::string("standard output") : file_label(file_)) + ": " +
                       std::strerror(errno)};
}

void file_output::paint_json(color_mode color) {
    if (file_.empty() && use_color(color, STDOUT_FILENO)) painter_.emplace();
}

void file_output::write_all(const char* octets, size_t count) {
    constexpr size_t most = 65536;  // that are painted at once: they get longer
    if (!painter_) return write_plain(octets, count);
    while (count != 0) {
        const size_t some = std::min(count, most);
        painted_.clear();
        painter_->paint({octets, some}, painted_);
        write_plain(painted_.data(), painted_.size());
        octets += some;
        count -= some;
    }
}

void file_output::write_plain(const char* octets, size_t count) {
    if (descriptor_ < 0) {
        descriptor_ = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (descriptor_ < 0) fail();
    }
    while (count != 0) {
        const ssize_t written = ::write(descriptor_, octets, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail();
        octets += written;
        count -= static_cast<size_t>(written);
    }
}

void file_output::flush() {
    if (at_ == block_) return;
    const auto count = static_cast<size_t>(at_ - block_);
    at_ = block_;
    write_all(block_, count);
}

void file_output::take(const char* octets, size_t count) {
    flush();
    if (count >= sizeof(block_)) return write_all(octets, count);
    copy(octets, count);
}

void file_output::close() {
    flush();
    if (descriptor_ < 0) write_all(block_, 0);
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // Some file systems tell only here that the octets did not fit. A pipe or terminal cannot be asked twice.
    if (descriptor == STDOUT_FILENO ? ::close(::dup(descriptor)) != 0 : ::close(descriptor) != 0) fail();
}

bool file_output::is_terminal() const { return file_.empty() && isatty(STDOUT_FILENO) != 0; }

void write_base64(output& out, const unsigned char* octets, size_t count) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr size_t line = 57;  // octets
    for (size_t i = 0; i < count; i += 3) {
        const size_t there = count - i < 3 ? count - i : 3;
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < there ? octets[i + k] : 0u);
        for (size_t k = 0; k < 4; ++k)
            out.put(k <= there ? digits[bits >> (18 - 6 * k) & 63] : '=');
        if (i + 3 >= count || (i + 3) % line == 0) out.put('\n');
    }
}

std::string file_label(std::string_view name) {
    constexpr size_t longest = 255;
    if (name.size() <= longest) return json::printable(name);
    return "..." + json::printable(name.substr(name.size() - longest));
}

}  // namespace zr::tool
