// A structure that is being decoded.
#pragma once

#include <cstddef>
#include <cstring>

#include "asn1/codec/general_reader.h"
#include "asn1/codec/record_codec.h"
#include "asn1/record/tree.h"

namespace zr {

// What it holds when it goes is released, unless it was handed on.
class unfinished {
public:
    explicit unfinished(const record_type& type) : type_(type) { std::memset(made_, 0, type.size); }
    unfinished(const unfinished&) = delete;
    unfinished& operator=(const unfinished&) = delete;
    ~unfinished() {
        if (!handed_on_) type_.codec->release(made_);
    }

    // Reads a record in the form that the library writes; false leaves the structure empty.
    bool read_quickly(const unsigned char* at, const unsigned char* end) {
        if (type_.codec->read(at, end, made_) != nullptr) return true;
        type_.codec->release(made_);
        std::memset(made_, 0, type_.size);
        return false;
    }
    // Reads a record in any form: 0 or a status.
    int read(const unsigned char* at, const unsigned char* end) {
        return read_quickly(at, end) ? 0 : read_any_form(type_, {at, end}, made_, nullptr);
    }
    void* get() { return made_; }
    void hand_on(void* out) {
        std::memcpy(out, made_, type_.size);
        handed_on_ = true;
    }

private:
    const record_type& type_;
    alignas(std::max_align_t) unsigned char made_[max_structure];
    bool handed_on_ = false;
};

}  // namespace zr
