#include "base/output.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

#include "base/text.h"

namespace zr::tool {

namespace {

// The two digits of each octet.
constexpr auto hex_pairs = [] {
    std::array<std::array<char, 2>, 256> pairs{};
    for (size_t octet = 0; octet < pairs.size(); ++octet)
        pairs[octet] = {"0123456789abcdef"[octet >> 4], "0123456789abcdef"[octet & 15]};
    return pairs;
}();

}  // namespace

output::output(std::string file)
    : file_(file == "-" ? std::string() : std::move(file)), descriptor_(file_.empty() ? STDOUT_FILENO : -1) {}

output::~output() {
    if (descriptor_ > STDERR_FILENO) ::close(descriptor_);
}

void output::fail() const {
    throw output_error{(file_.empty() ? std::string("standard output") : file_label(file_)) + ": " +
                       std::strerror(errno)};
}

void output::copy(const void* octets, size_t count) {
    if (count == 0) return;  // octets may be null then
    std::memcpy(block_ + used_, octets, count);
    used_ += count;
}

void output::write_all(const char* octets, size_t count) {
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

void output::flush() {
    if (used_ == 0) return;
    const size_t count = used_;
    used_ = 0;
    write_all(block_, count);
}

void output::write_through(const char* octets, size_t count) {
    flush();
    if (count >= sizeof(block_)) return write_all(octets, count);
    copy(octets, count);
}

void output::close() {
    flush();
    if (descriptor_ < 0) write_all(block_, 0);
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // Some file systems tell only here that the octets did not fit. A pipe or terminal cannot be asked twice.
    if (descriptor == STDOUT_FILENO ? ::close(::dup(descriptor)) != 0 : ::close(descriptor) != 0) fail();
}

bool output::is_terminal() const { return file_.empty() && isatty(STDOUT_FILENO) != 0; }

void output::write_hex(const unsigned char* octets, size_t count) {
    while (count != 0) {
        if (sizeof(block_) - used_ < 2) flush();
        const size_t some = std::min(count, (sizeof(block_) - used_) / 2);
        char* to = block_ + used_;
        for (const unsigned char* const end = octets + some; octets != end; ++octets, to += 2)
            std::memcpy(to, hex_pairs[*octets].data(), 2);
        used_ += 2 * some;
        count -= some;
    }
}

void output::write_base64(const unsigned char* octets, size_t count) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr size_t line = 57;  // octets
    for (size_t i = 0; i < count; i += 3) {
        const size_t there = count - i < 3 ? count - i : 3;
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < there ? octets[i + k] : 0u);
        for (size_t k = 0; k < 4; ++k)
            put(k <= there ? digits[bits >> (18 - 6 * k) & 63] : '=');
        if (i + 3 >= count || (i + 3) % line == 0) put('\n');
    }
}

}  // namespace zr::tool
