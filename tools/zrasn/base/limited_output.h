// Lines that are in proportion to the input that they are about.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/library.h"
#include "json/base/output.h"

namespace zr::tool {

// How many octets of lines a verb shows about so many octets of input, unless it is asked for all: with what closes its
// answer it stays below 100 for each, and 64 KiB.
constexpr uint64_t most_shown(uint64_t octets) { return 100 * octets + 61440; }

// limited_output hands lines on until they have so many octets, the line in which that is reached included, and counts
// those that come after.
class limited_output final : public output {
public:
    limited_output(output& to, uint64_t most);

    // Hands on what was collected. To be called when the answer is complete.
    void flush();
    // Lines that were not handed on. To be asked after flush.
    uint64_t left_out() const { return left_out_; }

private:
    void take(const char* octets, size_t count) override;

    output& to_;
    uint64_t left_;  // octets that may still be handed on
    uint64_t left_out_ = 0;
    bool within_line_ = false;  // of what was handed on
    char block_[16384];
};

}  // namespace zr::tool
