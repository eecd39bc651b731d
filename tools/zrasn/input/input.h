// Where a verb's octets come from: a file or standard input, as they are or written as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/exit_code.h"
#include "base/library.h"
#include "input/text_decoder.h"
#include "json/base/envelope.h"

namespace zr::tool {

// What read_input throws: the exit code (exit_io, or exit_refused when the text is not what it seemed) and the message,
// which names the file and is fit for a terminal.
struct input_error {
    int code;
    std::string message;
};

// octets_input holds all octets of one input, after hexadecimal digits, base64 or armour are undone. Plain files are
// mapped, not read, and what does not fit into 1 MB is kept in an unnamed temporary file that is mapped: octets that
// nobody looks at take no memory.
class octets_input {
public:
    octets_input() = default;
    ~octets_input();
    octets_input(octets_input&& other) noexcept;
    octets_input& operator=(octets_input&& other) noexcept;

    const unsigned char* data() const { return data_; }
    size_t size() const { return size_; }
    // As messages show it: the file's name, fit for a terminal, or "standard input".
    const std::string& label() const { return label_; }
    // The form that was found or forced, as a word for messages: "raw", "hex", "base64", "armour" or "dump".
    const char* form() const { return form_; }
    // Octets of the envelope header 04, version, AC, DC at the front (4), or 0 when there is none. Offsets in messages
    // count from data(), header included.
    size_t header_size() const { return header_size_; }
    // The octets before `offset` will hardly be looked at again: memory that maps them may go to others.
    void forget(size_t offset) const;
    // Of the header; meaningless without one.
    unsigned char version() const { return header_size_ != 0 ? data_[envelope_version_at] : 0; }
    // "FILE:OFFSET: what" that a text had beside these octets, such as another armoured block; empty when it had
    // nothing.
    const std::string& remark() const { return remark_; }

    // Octets that somebody else holds, and some of these, as inputs of their own: they must not outlive the octets. The
    // part's `name` goes behind the label.
    static octets_input view(const unsigned char* data, size_t size, std::string label);
    octets_input part(size_t offset, size_t size, const std::string& name) const;

private:
    friend class input_builder;

    const unsigned char* data_ = nullptr;
    size_t size_ = 0;
    void* mapping_ = nullptr;
    size_t mapped_ = 0;
    unsigned char* block_ = nullptr;
    std::string label_;
    const char* form_ = "raw";
    size_t header_size_ = 0;
    std::string remark_;
};

// What the octets are to be: anything, a record or several, or JSON. Of what can be no record, or no JSON, as its front
// tells, only the front is read: whoever wants it refuses it. More octets than a record's encoding can have are refused
// while they are read.
enum class wanted_input { anything, record, json };

// read_input reads all of `file` ("-" is standard input). Throws input_error. A file that is shortened, or gets
// unreadable, while its octets are looked at ends the program with exit_io and a message.
// `version` is the one that a record's envelope header must have.
octets_input read_input(const std::string& file, input_form form, wanted_input wanted,
                        unsigned version = envelope_version);

// Says on standard error that standard input is waited for, where both are terminals.
void announce_wait(const std::string& file);

// The label of a file in messages: its name, fit for a terminal; "standard input" for "-".
std::string input_label(const std::string& file);

}  // namespace zr::tool
