// decode --where and --select: which records are wanted, and what of them.
#pragma once

#include <cstddef>
#include <functional>

#include "asn1/record/registry.h"
#include "base/library.h"
#include "json/base/text_output.h"
#include "json/ber/losses.h"
#include "json/document/selection.h"

namespace zr::tool {

class record_filter {
public:
    // The record's decode accepts envelopes of the version.
    record_filter(const record_type& type, selection& asked, unsigned version, json_layout layout)
        : type_(type), asked_(asked), version_(version), layout_(layout) {}

    enum class outcome {
        unwanted,
        whole,    // it is wanted, and nothing is chosen of it: decode it
        chosen,   // text() has the chosen members
        refused,  // status() says why
    };
    // An envelope, or octets without its header. What a decode leaves out of the chosen is reported, where the record
    // had to be decoded.
    outcome take(const unsigned char* data, size_t size, const std::function<void(const loss&)>& report);

    std::string_view text() const { return text_.text(); }
    int status() const { return status_; }

private:
    selection::answer look(const unsigned char* data, size_t size);
    outcome decode(const unsigned char* data, size_t size, const std::function<void(const loss&)>& report);

    const record_type& type_;
    selection& asked_;
    const unsigned version_;
    const json_layout layout_;
    text_output text_;
    int status_ = 0;
};

}  // namespace zr::tool
