// What is printed to standard error, caught without a file: cheap enough for loops.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace zr_test {

// From its construction to its destruction what C code prints to stderr goes to memory.
class caught_stderr {
public:
    caught_stderr() : saved_(stderr), stream_(open_memstream(&text_, &length_)) {
        if (stream_ == nullptr) throw std::bad_alloc();
        stderr = stream_;
    }
    ~caught_stderr() {
        stderr = saved_;
        std::fclose(stream_);
        std::free(text_);
    }
    caught_stderr(const caught_stderr&) = delete;
    caught_stderr& operator=(const caught_stderr&) = delete;

    // What was printed since the last call.
    std::string take() {
        std::fflush(stream_);
        std::string taken(text_ + taken_, length_ - taken_);
        taken_ = length_;
        return taken;
    }

private:
    FILE* saved_;
    char* text_ = nullptr;
    size_t length_ = 0;
    size_t taken_ = 0;
    FILE* stream_;
};

}  // namespace zr_test
