#include "input/line_reader.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "input/input.h"

namespace zr::tool {

line_reader::line_reader(const std::string& file, file_output& answers, size_t most)
    : label_(input_label(file)),
      answers_(answers),
      most_(most),
      file_(file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)),
      block_(65536) {
    if (file_ < 0) throw input_error{exit_io, label_ + ": " + std::strerror(errno)};
    announce_wait(file);
}

line_reader::~line_reader() {
    if (file_ != STDIN_FILENO) ::close(file_);
}

// Fills the block behind what is in it; false at the end of the file.
bool line_reader::read_more() {
    if (begin_ != 0) {
        std::memmove(block_.data(), block_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == block_.size()) block_.resize(2 * block_.size());
    pollfd waiting{file_, POLLIN, 0};
    if (::poll(&waiting, 1, 0) == 0) answers_.flush();
    for (;;) {
        const ssize_t count = ::read(file_, block_.data() + end_, block_.size() - end_);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw input_error{exit_io, label_ + ": " + std::strerror(errno)};
        end_ += static_cast<size_t>(count);
        return count != 0;
    }
}

// The next line with what ends it, or what is left behind the last end; false when nothing is.
bool line_reader::take_line(std::string_view& line) {
    too_long_ = false;
    for (size_t looked_at = 0;;) {
        const char* const begin = block_.data() + begin_;
        const size_t there = end_ - begin_;
        const void* found = std::memchr(begin + looked_at, '\n', there - looked_at);
        if (found != nullptr || at_end_) {
            line = {begin, found != nullptr ? static_cast<size_t>(static_cast<const char*>(found) - begin) + 1 : there};
            begin_ += line.size();
            too_long_ = too_long_ || line.size() > most_;
            return !line.empty() || too_long_;
        }
        looked_at = there;
        if (there > most_) {
            too_long_ = true;
            begin_ = end_;
            looked_at = 0;
        }
        at_end_ = !read_more();
    }
}

bool line_reader::next(std::string_view& line) {
    while (take_line(line)) {
        ++number_;
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
            line.remove_suffix(1);
        if (too_long_ || line.find_first_not_of(" \t") != line.npos) return true;
    }
    return false;
}

}  // namespace zr::tool
