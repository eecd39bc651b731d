// One structure of a record, whatever its type.
#pragma once

#include <cstdlib>
#include <new>

#include "asn1/record/registry.h"

namespace zr::tool {

// record_holder owns a zeroed structure and releases its contents with it.
class record_holder {
public:
    explicit record_holder(const record_type& type) : type_(type), contents_(std::calloc(1, type.size)) {
        if (contents_ == nullptr) throw std::bad_alloc();
    }
    ~record_holder() {
        type_.free(contents_);
        std::free(contents_);
    }
    record_holder(const record_holder&) = delete;
    record_holder& operator=(const record_holder&) = delete;

    void* get() { return contents_; }

private:
    const record_type& type_;
    void* contents_;
};

}  // namespace zr::tool
