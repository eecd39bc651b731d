// One structure of a record, whatever its type.
#pragma once

#include <cstdlib>
#include <new>
#include <utility>

#include "asn1/record/registry.h"

namespace zr::json {

// record_holder owns a zeroed structure and releases its contents with it.
class record_holder {
public:
    explicit record_holder(const record_type& type) : type_(type), contents_(std::calloc(1, type.size)) {
        if (contents_ == nullptr) throw std::bad_alloc();
    }
    ~record_holder() {
        if (contents_ == nullptr) return;
        type_.free(contents_);
        std::free(contents_);
    }
    record_holder(const record_holder&) = delete;
    record_holder& operator=(const record_holder&) = delete;

    void* get() { return contents_; }
    // Gives the structure, a block from malloc, to the caller.
    void* release() { return std::exchange(contents_, nullptr); }

private:
    const record_type& type_;
    void* contents_;
};

}  // namespace zr::json
