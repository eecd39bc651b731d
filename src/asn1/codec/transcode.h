// Changing the code set of the texts in an encoding.
#pragma once

#include <cstddef>
#include <cstdint>

#include "asn1/codec/local_texts.h"
#include "asn1/codec/quick_reader.h"
#include "asn1/codec/writer.h"

namespace zr {

// A list of octets that grows at its end and is taken apart from there, in chunks, so that growing moves nothing. The
// first chunk needs no memory of its own.
class octet_stack {
public:
    // One that holds secrets overwrites what it gives back.
    explicit octet_stack(bool secret) : secret_(secret) {}
    octet_stack(const octet_stack&) = delete;
    octet_stack& operator=(const octet_stack&) = delete;
    ~octet_stack();

    bool empty() const { return last_ == &first_ && first_.used == 0; }
    // Both throw zr_asn_memexception.
    void push(const void* octets, size_t count) {
        if (count > sizeof last_->octets - last_->used) return push_in_parts(octets, count);
        copy_octets(last_->octets + last_->used, octets, count);
        last_->used += static_cast<uint32_t>(count);
    }
    void push_number(uint64_t number) {
        if (number >= 0x80 || last_->used == sizeof last_->octets) return push_long_number(number);
        last_->octets[last_->used++] = static_cast<unsigned char>(number);
    }
    uint64_t pop_number() {
        if (last_->used == 0 || last_->octets[last_->used - 1] >= 0x80) return pop_long_number();
        return last_->octets[--last_->used];
    }
    // Moves the last `count` octets before what the writer has.
    void pop_to(writer& sink, size_t count) {
        if (count > last_->used) return pop_parts_to(sink, count);
        last_->used -= static_cast<uint32_t>(count);
        sink.octets(last_->octets + last_->used, count);
    }

private:
    struct chunk {
        chunk* before;
        uint32_t used;
        unsigned char octets[1000];
    };

    void push_in_parts(const void* octets, size_t count);
    void pop_parts_to(writer& sink, size_t count);
    void push_long_number(uint64_t number);
    uint64_t pop_long_number();
    void drop_last_chunk();

    const bool secret_;
    chunk first_{};
    chunk* last_ = &first_;
};

// transcoder makes another encoding of an encoding in the library's own form: the same but for the texts, which it
// converts. Two steps, because a length comes before what it counts: the first goes from the front to the back,
// converts the texts and keeps those that change; the second writes from the back to the front.
class transcoder {
public:
    transcoder(text_conversion& conversion, bool secret) : conversion_(conversion), changes_(secret) {}

    // Converts the texts of the first value, a SEQUENCE. False when it meets anything but SEQUENCE and primitive values
    // of universal types with definite lengths that fit into each other; then there is nothing to write. Parts in which
    // no text would change are not looked into. Throws what the conversion throws, and zr_asn_memexception.
    bool convert(octet_position at, octet_position end);
    // How many octets the value has.
    size_t converted() const { return static_cast<size_t>(stop_ - first_); }
    // How many octets are to be written.
    uint64_t length() const { return length_; }
    // Writes them, for which the writer has room, and for the header of an envelope before them; once only.
    void write(writer& sink);

private:
    int64_t convert_text(octet_position at, octet_position contents, octet_position stop);
    void keep_place(octet_position at, bool is_sequence);

    text_conversion& conversion_;
    octet_position first_ = nullptr;
    // Of each text that changes, in order: its new octets, their number and its place; of each SEQUENCE that holds one,
    // behind all that it holds, its place. A place is the distance from the one before.
    octet_stack changes_;
    octet_position place_ = nullptr;  // the last one
    octet_position stop_ = nullptr;   // where the first value ends
    uint64_t length_ = 0;
};

}  // namespace zr
