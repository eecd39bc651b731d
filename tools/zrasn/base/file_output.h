// Where a verb's answer goes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/color.h"
#include "base/json_painter.h"
#include "base/library.h"
#include "json/base/output.h"

namespace zr::tool {

// What file_output throws when a write fails: the message names the file and is fit for a terminal.
struct output_error {
    std::string message;
};

// file_output collects what is written and hands it to a file or to standard output. Nobody else may write to standard
// output while one lives. A file is made, or emptied, when its first octet is handed over.
class file_output final : public output {
public:
    // The file of that name; standard output when the name is empty or "-".
    explicit file_output(std::string file);
    // What was not flushed is lost: an answer that is cut short by an exception is not completed.
    ~file_output();

    // Hands over what was collected; throws output_error.
    void flush();
    // Flushes and closes: errors that only show then are reported too. To be called when the answer is complete.
    void close();

    bool is_terminal() const;

    // What is written from now on is JSON: on standard output it has colours, where use_color has it so.
    void paint_json(color_mode color);

private:
    void take(const char* octets, size_t count) override;
    void write_all(const char* octets, size_t count);
    void write_plain(const char* octets, size_t count);
    [[noreturn]] void fail() const;

    std::string file_;
    int descriptor_;
    std::optional<json_painter> painter_;
    std::string painted_;
    char block_[65536];
};

// RFC 4648, 4, in lines of 76 characters, each ended.
void write_base64(output& out, const unsigned char* octets, size_t count);

// The name of a file in messages: of a long one the end.
std::string file_label(std::string_view name);

}  // namespace zr::tool
