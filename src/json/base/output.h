// Where what is written goes: a file of the program's, or a block for the caller of a function.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zr::json {

// output collects octets in a window of memory; a class that is derived from it takes them where the window is full.
class output {
public:
    void write(const void* octets, size_t count) {
        if (count > static_cast<size_t>(end_ - at_)) return take(static_cast<const char*>(octets), count);
        copy(octets, count);
    }
    void write(std::string_view text) { write(text.data(), text.size()); }
    void put(char c) {
        if (at_ == end_) return take(&c, 1);
        *at_++ = c;
    }
    // Two lower-case digits for each octet.
    void write_hex(const unsigned char* octets, size_t count);

protected:
    output() = default;
    ~output() = default;
    output(const output&) = delete;
    output& operator=(const output&) = delete;

    // Takes all that the window has, and these octets behind it, for which it had no room.
    virtual void take(const char* octets, size_t count) = 0;

    void copy(const void* octets, size_t count) {
        if (count == 0) return;  // octets may be null then
        std::memcpy(at_, octets, count);
        at_ += count;
    }

    char* at_ = nullptr;   // the next octet of the window
    char* end_ = nullptr;  // of the window
};

}  // namespace zr::json
