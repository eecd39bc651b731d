// Where a verb's answer goes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zr::tool {

// What output throws when a write fails: the message names the file and is fit for a terminal.
struct output_error {
    std::string message;
};

// output collects what is written and hands it to a file or to standard output. Nobody else may write to standard
// output while one lives. A file is made, or emptied, when its first octet is handed over.
class output {
public:
    // The file of that name; standard output when the name is empty or "-".
    explicit output(std::string file);
    // What was not flushed is lost: an answer that is cut short by an exception is not completed.
    ~output();
    output(const output&) = delete;
    output& operator=(const output&) = delete;

    void write(const void* octets, size_t count) {
        if (count > sizeof(block_) - used_) return write_through(static_cast<const char*>(octets), count);
        copy(octets, count);
    }
    void write(std::string_view text) { write(text.data(), text.size()); }
    void put(char c) {
        if (used_ == sizeof(block_)) flush();
        block_[used_++] = c;
    }
    // Two lower-case digits for each octet.
    void write_hex(const unsigned char* octets, size_t count);
    // RFC 4648, 4, in lines of 76 characters, each ended.
    void write_base64(const unsigned char* octets, size_t count);

    // Hands over what was collected; throws output_error.
    void flush();
    // Flushes and closes: errors that only show then are reported too. To be called when the answer is complete.
    void close();

    bool is_terminal() const;

private:
    void copy(const void* octets, size_t count);
    void write_through(const char* octets, size_t count);
    void write_all(const char* octets, size_t count);
    [[noreturn]] void fail() const;

    std::string file_;
    int descriptor_;
    size_t used_ = 0;
    char block_[65536];
};

}  // namespace zr::tool
