#include "verbs/record_filter.h"

#include "asn1/status.h"
#include "json/base/envelope.h"
#include "json/base/record_holder.h"
#include "zrasn/guard.h"

namespace zr::tool {

// Octets without the header.
selection::answer record_filter::look(const unsigned char* data, size_t size) {
    using answer = selection::answer;
    text_.clear();
    const answer holds = asked_.has_conditions() ? asked_.holds(data, size) : answer::yes;
    return holds == answer::yes && asked_.selects() ? asked_.write(text_, data, size, layout_) : holds;
}

record_filter::outcome record_filter::take(const unsigned char* data, size_t size,
                                           const std::function<void(const loss&)>& report) {
    const bool enveloped = has_header(data, size);
    const size_t header = enveloped ? envelope_header_octets : 0;
    const bool other_version = enveloped && data[envelope_version_at] != version_;
    if (other_version || size > most_encoding_octets - envelope_header_octets) return decode(data, size, report);
    switch (look(data + header, size - header)) {
        case selection::answer::no:
            return outcome::unwanted;
        case selection::answer::yes:
            return asked_.selects() ? outcome::chosen : outcome::whole;
        case selection::answer::other_form:
            break;
    }
    return decode(data, size, report);
}

// Octets that are not as the library writes them, or no record: the library's own of the same value are looked at.
record_filter::outcome record_filter::decode(const unsigned char* data, size_t size,
                                             const std::function<void(const loss&)>& report) {
    record_holder record(type_);
    encoding own;
    status_ = decode_octets(type_, data, size, record.get(), version_);
    if (status_ == zr_ok) status_ = type_.encode(own.out(), record.get(), static_cast<int>(version_));
    if (status_ != zr_ok) return outcome::refused;
    const selection::answer found = look(own.data() + envelope_header_octets, own.size() - envelope_header_octets);
    if (found == selection::answer::no) return outcome::unwanted;
    if (!asked_.selects()) return outcome::whole;
    find_losses(data, size, envelope_header_size(data, size), type_, record.get(), report);
    return outcome::chosen;
}

}  // namespace zr::tool
