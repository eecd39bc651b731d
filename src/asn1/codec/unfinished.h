// A structure that is being decoded.
#pragma once

#include <cstddef>
#include <cstring>

#include "asn1/codec/definite_form.h"
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

    // Reads a record in the form that the library writes, some values and lengths in other forms, and returns where it
    // ends; null leaves the structure empty.
    octet_position read_quickly(octet_position at, octet_position end) {
        if (const octet_position behind = type_.codec->read(at, end, made_)) return behind;
        // What was read is released afterwards: before, the allocator would tidy it up for the sake of the copy.
        definite_form definite(type_.codec->has_secrets);
        const bool is_definite = definite.write(at, end, type_.module);
        clear();
        if (!is_definite) return nullptr;
        if (type_.codec->read(definite.copy().at, definite.copy().end, made_) != nullptr) return definite.behind();
        clear();
        return nullptr;
    }
    // Reads a record in the form that the library writes, some values and lengths in other forms, with its texts to the
    // local code set, and returns where it ends; null leaves the structure empty. Throws what the conversion throws,
    // and the structure then holds what was read.
    octet_position read_local(octet_position at, octet_position end, text_conversion& conversion) {
        const octet_position behind = type_.codec->read_local(at, end, made_, local_blocks{&conversion});
        if (behind == nullptr) clear();
        return behind;
    }
    // Reads a record that has to be just as the library writes it, to the end. False leaves the structure empty.
    bool read_strictly(octet_position at, octet_position end) {
        const bool is_strict = type_.codec->read_strictly(at, end, made_, strict_blocks{nullptr}) == end;
        if (!is_strict) clear();
        return is_strict;
    }
    // Reads a record in any form: 0 or a status. Throws zr_asn_memexception for a list with more elements than its
    // count holds.
    int read(octet_position at, octet_position end) {
        if (read_quickly(at, end) != nullptr) return 0;
        general_reading any;
        const int status = read_any_form(type_, {at, end}, made_, any);
        if (status == 0 && any.uncounted.module != nullptr) throw_memory_error(any.uncounted.module);
        return status;
    }
    void clear() {
        type_.codec->release(made_);
        std::memset(made_, 0, type_.size);
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
