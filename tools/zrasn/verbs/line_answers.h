// What --lines says beside the records.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "asn1/record/registry.h"
#include "base/library.h"
#include "json/base/output.h"

namespace zr::tool {

// line_refusal is what the line of a refused record says; `line` is counted from 1. Status 0 stands for text that never
// came to the library: its status and name are null.
struct line_refusal {
    int status;
    const char* reason;  // a key that never changes (docs/api.md and docs/tool.md)
    uint64_t line;
    uint64_t offset;
    std::string_view path;
    std::string_view message;
};
void write_line_refusal(output& out, const line_refusal& refusal);

// take_record takes the name of a record from the front of a line; null, and the line as it was, when none is there.
const record_type* take_record(std::string_view& line);

// line_progress counts, and after two seconds shows the count on standard error, when that is a terminal.
class line_progress {
public:
    line_progress();
    ~line_progress();
    void accepted() { count(false); }
    void refused() { count(true); }
    bool any_refused() const { return refused_ != 0; }

private:
    void count(bool refused);

    uint64_t records_ = 0;
    uint64_t refused_ = 0;
    bool terminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace zr::tool
