// A text that is written into a block of its own.
#pragma once

#include <cstdint>

#include "json/base/output.h"

namespace zr::json {

// What text_output throws when its text would pass the most that it may have.
struct text_too_long {};

// text_output collects a text in a block from malloc. Throws std::bad_alloc.
class text_output final : public output {
public:
    // The text may have `most` octets.
    explicit text_output(size_t most = SIZE_MAX) : most_(most) {}
    ~text_output();

    size_t size() const { return static_cast<size_t>(at_ - begin_); }
    std::string_view text() const { return {begin_, size()}; }
    // Takes all back.
    void clear() { at_ = begin_; }
    // Gives the block, with a zero octet behind the text, to the caller.
    char* release();

private:
    void take(const char* octets, size_t count) override;
    void grow(size_t wanted);

    const size_t most_;
    char* begin_ = nullptr;
};

}  // namespace zr::json
